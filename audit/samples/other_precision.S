/* Single-precision arithmetic in a double body.
   expects: precision xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vaddps ymm2, ymm2, ymm3
#include "pair20.inc"
