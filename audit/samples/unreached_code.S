/* Instructions that no path reaches.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define CLEAN vzeroupper; ret; vaddpd ymm0, ymm0, ymm1
#include "pair20.inc"
