/* A fused operation of 256 bits by signs that were loaded into 128.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK fused
#include "signs.inc"
.macro fused
  vmovapd xmm11, [rip + signs]
  vfmadd213pd ymm2, ymm11, ymm3
.endm
#include "pair20.inc"
