/* A release of what is not the work buffer.
   expects: call xfmgWHT_8_32f
   expects: call owngWHT_8_32f_unaligned
   imports: xfmMalloc xfmFree
*/
#include "pieces.inc"
#define FREE mov rdi, rbx
#include "passes8.inc"
