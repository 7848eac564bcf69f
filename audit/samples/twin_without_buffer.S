/* The twin does not get the buffer.
   expects: call xfmgWHT_8_32f
   imports: xfmMalloc xfmFree
*/
#include "pieces.inc"
#define TO_TWIN8 xor ecx, ecx; jmp owngWHT_8_32f_unaligned
#include "passes8.inc"
