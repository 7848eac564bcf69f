/* A DCT-IV stage that moves values across the halves of a register, computes in scalars, in the other precision.
   expects: stages owngDCT4_32fg9_env5_compute
   expects: stages owngDCT4_32fg9_env5_compute
   expects: stages owngDCT4_32fg9_env5_compute
*/
#include "pieces.inc"
.hidden owngDCT4_32fg9_env5_compute
begin owngDCT4_32fg9_env5_compute
  vaddps ymm0, ymm0, ymm1
  vperm2f128 ymm0, ymm0, ymm1, 1
  vaddss xmm0, xmm0, xmm1
  vaddpd ymm0, ymm0, ymm1
  vzeroupper
  ret
finish owngDCT4_32fg9_env5_compute
