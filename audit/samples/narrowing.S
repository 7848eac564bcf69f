/* A result rounded to single precision in a double body.
   expects: precision xfmgDFTFwd_CToC_20_64fc vcvtpd2ps
*/
#include "pieces.inc"
#define WORK vcvtpd2ps xmm2, ymm2
#include "pair20.inc"
