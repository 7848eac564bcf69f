/* 128-bit work in a 256-bit body.
   expects: width xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vaddpd xmm2, xmm2, xmm3
#include "pair20.inc"
