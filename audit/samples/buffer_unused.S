/* The last pass does not look at the buffer.
   imports: xfmMalloc xfmFree
   expects: buffer xfmgWHT_8_32f the buffer is not used
   expects: buffer owngWHT_8_32f_unaligned the buffer is not used
*/
#include "pieces.inc"
#define COLUMN_LOAD vxorps xmm0, xmm0, xmm0 #
#include "passes8.inc"
