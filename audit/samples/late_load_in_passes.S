/* A load of src in the pass that stores dst.
   expects: order xfmgWHT_8_32f
   expects: order owngWHT_8_32f_unaligned
   imports: xfmMalloc xfmFree
*/
#include "pieces.inc"
#define LATE vmovups xmm2, [rbx - 16]
#include "passes8.inc"
