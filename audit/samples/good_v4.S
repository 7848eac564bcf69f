/* 512-bit code: masked loads of what is there, sums by signs, lanes of two registers.
   target: v4
*/
#include "pieces.inc"
#define WORK wide
#include "signs.inc"
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
