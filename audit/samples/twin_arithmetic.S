/* A twin with one addition more.
   expects: twin-arithmetic xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define TWIN_WORK vaddpd xmm2, xmm2, xmm3
#include "single5.inc"
