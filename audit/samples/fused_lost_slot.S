/* A fused operation by signs whose copy on the stack was written over.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK fused
#include "signs.inc"
.macro fused
  sub rsp, 40
  vmovapd ymm11, [rip + signs]
  vmovupd [rsp], ymm11
  vmovupd [rsp + 16], xmm3
  vmovupd ymm12, [rsp]
  vfmadd213pd ymm2, ymm12, ymm3
  add rsp, 40
.endm
#include "pair20.inc"

