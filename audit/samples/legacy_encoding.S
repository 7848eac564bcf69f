/* A legacy encoding among VEX ones.
   expects: encoding xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define WORK addpd xmm2, xmm3
#include "single5.inc"
