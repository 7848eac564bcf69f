/* A fused operation whose factor is not 1 or -1 in every lane.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
*/
#include "pieces.inc"
#define WORK vfmadd231pd ymm0, ymm1, [rip + mixed]
.section .rodata
  .p2align 6
signs: .double 1.0, -1.0, -1.0, 1.0
mixed: .double 1.0, 2.0, -1.0, 1.0
.text
#include "pair20.inc"
