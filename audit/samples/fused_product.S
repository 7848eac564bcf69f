/* A fused operation whose factor is not 1 or -1 in every lane.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK vfmadd231pd ymm0, ymm1, [rip + mixed]
#include "signs.inc"
#include "pair20.inc"
