/* convention_probe(probe): calls probe->function with six arguments on the stack that probe->stack names, and writes down
   everything that the x86-64 psABI gives back to a caller: rbx, rbp, r12 to r15, rsp, the direction flag, MXCSR, the
   x87 control and tag words, and the upper halves of the vector registers 0 to 15, those of 512 bits, too, if probe->wide.
   Registers 16 to 31 and the masks are the callee's, and slow nobody down. The layout is that of probe.h. */
.intel_syntax noprefix
.text
.globl convention_probe
.type convention_probe, @function
convention_probe:
  push rbx
  push rbp
  push r12
  push r13
  push r14
  push r15
  mov [rip + own_stack], rsp
  mov [rip + own_probe], rdi
  mov rax, rdi
  mov rsp, [rax + 8]
  vzeroall
  fninit
  ldmxcsr [rax + 72]
  mov rbx, 0x1111111111111111
  mov rbp, 0x2222222222222222
  mov r12, 0x3333333333333333
  mov r13, 0x4444444444444444
  mov r14, 0x5555555555555555
  mov r15, 0x6666666666666666
  mov r10, 0x7777777777777777
  mov r11, r10
  mov rdi, [rax + 16]
  mov rsi, [rax + 24]
  mov rdx, [rax + 32]
  mov rcx, [rax + 40]
  mov r8, [rax + 48]
  mov r9, [rax + 56]
  cld
  call [rax]
  mov r10, [rip + own_probe]
  mov [r10 + 80], rax
  mov [r10 + 88], rbx
  mov [r10 + 96], rbp
  mov [r10 + 104], r12
  mov [r10 + 112], r13
  mov [r10 + 120], r14
  mov [r10 + 128], r15
  mov [r10 + 136], rsp
  mov rsp, [rip + own_stack]
  pushfq
  pop [r10 + 144]
  cld
  stmxcsr [r10 + 76]
  fnstenv [r10 + 152]
  fninit
.irp i, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
  vextractf128 [r10 + 184 + 16 * \i], ymm\i, 1
.endr
  cmp qword ptr [r10 + 440], 0
  je 1f
.irp i, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
  vextractf64x4 [r10 + 448 + 32 * \i], zmm\i, 1
.endr
1:
  vzeroupper
  ldmxcsr [rip + default_mxcsr]
  pop r15
  pop r14
  pop r13
  pop r12
  pop rbp
  pop rbx
  ret
.size convention_probe, . - convention_probe

/* Functions that break one promise each. */
.macro fault name
  .globl fault_\name
  .type fault_\name, @function
fault_\name:
.endm
fault none;      xor eax, eax; ret
fault rbx;       xor ebx, ebx; ret
fault rbp;       inc rbp; ret
fault r12;       not r12; ret
fault r13;       mov r13d, r13d; ret
fault r14;       mov r14, rdi; ret
fault r15;       neg r15; ret
fault rsp;       ret 16
fault direction; std; ret
fault rounding;  mov dword ptr [rsp - 8], 0x3f80; ldmxcsr [rsp - 8]; ret
fault flush;     mov dword ptr [rsp - 8], 0x9fc0; ldmxcsr [rsp - 8]; ret
fault mask;      mov dword ptr [rsp - 8], 0x1f00; ldmxcsr [rsp - 8]; ret
fault x87_word;  mov word ptr [rsp - 8], 0x27f; fldcw [rsp - 8]; ret
fault x87_stack; fld1; ret
fault mmx;       movd mm0, eax; ret
fault ymm0;      vcmpps ymm0, ymm0, ymm0, 15; ret
fault ymm7;      vcmpps ymm7, ymm7, ymm7, 15; ret
fault ymm15;     vcmpps ymm15, ymm15, ymm15, 15; ret
.macro dirty_wide i
  mov eax, 0xff00
  kmovw k1, eax
  vpternlogd zmm\i{k1}{z}, zmm\i, zmm\i, 255
  ret
.endm
fault zmm0;      dirty_wide 0
fault zmm15;     dirty_wide 15
.data
own_stack: .quad 0
own_probe: .quad 0
default_mxcsr: .long 0x1f80
.section .note.GNU-stack, "", @progbits
