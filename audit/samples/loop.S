/* A loop in the body.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK mov ecx, 4; 60: vaddpd ymm2, ymm2, ymm3; dec ecx; jne 60b
#include "pair20.inc"
