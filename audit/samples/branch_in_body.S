/* A choice after the first load.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc a branch after the first access
   expects: straight-line xfmgDFTFwd_CToC_20_64fc 0 straight lines
*/
#include "pieces.inc"
#define WORK cmp edx, 8; je 60f; vmovapd ymm2, ymm3; 60:
#include "pair20.inc"
