/* A zero of the half-spectrum that is looked at.
   expects: extent xfmgDFTInv_CCSToR_2_64f src component 1 is loaded
*/
#include "pieces.inc"
#define WORK vmovsd xmm3, [rdi + 8]
#include "ccs2.inc"
