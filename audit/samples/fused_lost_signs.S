/* A fused operation by a register whose signs were written over.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK fused
.section .rodata
  .p2align 6
signs: .double 1.0, -1.0, -1.0, 1.0
mixed: .double 1.0, 2.0, -1.0, 1.0
.text
.macro fused
  vmovapd ymm11, [rip + signs]
  vaddpd ymm11, ymm11, ymm3
  vfmadd213pd ymm2, ymm11, ymm3
.endm
#include "pair20.inc"
