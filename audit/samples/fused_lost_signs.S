/* A fused operation by a register whose signs were written over.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK fused
#include "signs.inc"
.macro fused
  vmovapd ymm11, [rip + signs]
  vaddpd ymm11, ymm11, ymm3
  vfmadd213pd ymm2, ymm11, ymm3
.endm
#include "pair20.inc"
