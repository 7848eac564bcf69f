/* A legacy encoding beside masks and 512 bits.
   target: v4
   expects: encoding xfmgDFTFwd_CToC_20_64fc neither a VEX nor an EVEX encoding
*/
#include "pieces.inc"
#define WORK addpd xmm0, xmm1
#include "pair20.inc"
