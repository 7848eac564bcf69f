/* Scalar arithmetic in a vector body.
   expects: width xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vaddsd xmm2, xmm2, xmm3
#include "pair20.inc"
