/* A fused operation of 256 bits by signs that were loaded into 128.
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
  vmovapd xmm11, [rip + signs]
  vfmadd213pd ymm2, ymm11, ymm3
.endm
#include "pair20.inc"
