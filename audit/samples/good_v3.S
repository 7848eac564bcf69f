/* Second-generation code in a copy for processors that have it: sums by signs, from memory, from a register, from a
   register that was kept on the stack; lanes moved across halves.
   target: v3
*/
#include "pieces.inc"
#define WORK fused
#include "signs.inc"
.macro fused
  sub rsp, 40
  vfmadd231pd ymm0, ymm1, [rip + signs]
  vmovapd ymm11, [rip + signs]
  vmovupd [rsp], ymm11
  vfmadd213pd ymm2, ymm11, ymm3
  vxorpd ymm11, ymm11, ymm11
  vmovupd ymm12, [rsp]
  vfnmadd132pd ymm4, ymm5, ymm12
  vpermpd ymm6, ymm6, 0x1b
  vbroadcastsd ymm7, xmm7
  add rsp, 40
.endm
#include "pair20.inc"
