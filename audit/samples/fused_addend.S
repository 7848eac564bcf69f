/* A fused operation with the signs as its addend.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK vfmadd213pd ymm0, ymm1, [rip + signs]
.section .rodata
  .p2align 6
signs: .double 1.0, -1.0, -1.0, 1.0
mixed: .double 1.0, 2.0, -1.0, 1.0
.text
#include "pair20.inc"
