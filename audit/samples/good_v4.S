/* 512-bit code: masked loads of what is there, sums by signs, lanes of two registers.
   target: v4
*/
#include "pieces.inc"
#define WORK wide
.section .rodata
  .p2align 6
signs: .double 1.0, -1.0, -1.0, 1.0
mixed: .double 1.0, 2.0, -1.0, 1.0
.text
.macro wide
  mov ecx, 7
  kmovb k1, ecx
  vmovupd zmm16{k1}{z}, [rdi + 296]
  vbroadcastsd zmm17, [rip + signs]
  vfmadd213pd zmm16, zmm17, zmm16
  vfmsub132pd ymm1, ymm2, qword ptr [rip + signs + 8]{1to4}
  vmovupd zmm18, [rdi]
  vpermt2pd zmm16, zmm17, zmm18
.endm
#include "pair20.inc"
