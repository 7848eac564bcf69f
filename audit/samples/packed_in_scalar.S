/* Packed work in a scalar body.
   expects: width xfmgDFTFwd_CToC_2_32fc packed work in a scalar body
*/
#include "pieces.inc"
#define WORK vaddps xmm0, xmm0, xmm2
#include "scalar2.inc"
