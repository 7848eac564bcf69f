/* A fused operation with the signs as its addend.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK vfmadd213pd ymm0, ymm1, [rip + signs]
#include "signs.inc"
#include "pair20.inc"
