/* An input taken as single precision in a double body.
   expects: precision xfmgDFTFwd_CToC_20_64fc vcvtps2pd
*/
#include "pieces.inc"
#define WORK vcvtps2pd ymm2, xmm2
#include "pair20.inc"
