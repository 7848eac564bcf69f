/* A fused multiply-add.
   expects: fma xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vfmadd213pd ymm0, ymm1, ymm2
#include "pair20.inc"
