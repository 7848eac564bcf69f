/* An operation of the first generation that no kernel uses.
   expects: operation xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define WORK vhaddpd xmm2, xmm2, xmm3
#include "single5.inc"
