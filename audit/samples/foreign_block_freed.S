/* A release of the work buffer although it may be the caller's.
   expects: call xfmgWHT_8_32f
   expects: call owngWHT_8_32f_unaligned
   imports: xfmMalloc xfmFree
*/
#include "pieces.inc"
#define FREE mov rdi, r12
#include "passes8.inc"
