/* A store to dst in the loop that still loads src.
   expects: order xfmgWHT_8_32f
   expects: order owngWHT_8_32f_unaligned
   imports: xfmMalloc xfmFree
*/
#include "pieces.inc"
#define FIRST_PASS vmovups [rbp], xmm0
#include "passes8.inc"
