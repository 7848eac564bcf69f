/* 256-bit work in a 128-bit body.
   expects: width xfmgDFTFwd_CToC_5_64fc
   expects: zero-upper xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define WORK vaddpd ymm2, ymm2, ymm3
#define TWIN_WORK vaddpd xmm2, xmm2, xmm3
#include "single5.inc"
