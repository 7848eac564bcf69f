/* Six fused operations: four are told one by one.
   expects: fma xfmgDFTFwd_CToC_20_64fc 2 more of the kind
   expects: fma xfmgDFTFwd_CToC_20_64fc fused multiply-add
*/
#include "pieces.inc"
#define WORK .rept 6; vfmadd231pd ymm2, ymm3, ymm4; .endr
#include "pair20.inc"
