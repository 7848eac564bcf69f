/* One sound body of every kind: no rule may speak.
   imports: xfmMalloc xfmFree
   counts: pair20.tsv good.tsv
*/
#include "pieces.inc"
#include "pair20.inc"
#include "single5.inc"

#include "scalar2.inc"

#include "two_lines.inc"

/* Two 256-bit lines behind a 32-byte gate that follows the null tests, with a realigned frame, a spilled value and
   a pointer kept on the stack. */
.macro eight move
  push rbp
  mov rbp, rsp
  and rsp, -32
  sub rsp, 96
  mov [rsp + 8], rdi
  vbroadcastsd ymm15, [rax]
  \move ymm0, [rdi]
  \move ymm1, [rdi + 32]
  vmovapd [rsp + 32], ymm0
  mov rcx, [rsp + 8]
  \move ymm2, [rcx + 64]
  \move ymm3, [rdi + 96]
  vaddpd ymm4, ymm1, ymm3
  vmulpd ymm4, ymm4, ymm15
  vmulpd ymm1, ymm15, [rsp + 32]
  \move [rsi], ymm1
  \move [rsi + 32], ymm2
  lea rdx, [rsi + 64]
  \move [rdx], ymm3
  \move [rdx + 32], ymm4
  xor eax, eax
  vzeroupper
  leave
  ret
.endm
begin xfmgDFTFwd_CToC_8_64fc
  test rdi, rdi
  je 90f
  test rsi, rsi
  je 90f
  mov eax, edi
  and eax, 31
  jne 70f
  test sil, 31
  jne 70f
  null_and_flag_tests doubles
  eight vmovapd
70:
  null_and_flag_tests doubles
  eight vmovupd
  refusals
finish xfmgDFTFwd_CToC_8_64fc

/* Mixed precision with a zero cell. */
begin xfmgDFTFwd_RToCCS_3_32f
  null_and_flag_tests singles
  vmovss xmm0, [rdi]
  vmovss xmm1, [rdi + 4]
  vmovss xmm2, [rdi + 8]
  vaddss xmm3, xmm1, xmm2
  vsubss xmm4, xmm1, xmm2
  vaddss xmm5, xmm0, xmm3
  vxorps xmm6, xmm6, xmm6
  vcvtss2sd xmm4, xmm4, xmm4
  vmulsd xmm4, xmm4, [rip + doubles + 16]
  vcvtsd2ss xmm4, xmm4, xmm4
  vsubss xmm4, xmm6, xmm4
  vmulss xmm5, xmm5, [rax]
  vmovss [rsi], xmm5
  mov dword ptr [rsi + 4], 0
  vmovss [rsi + 8], xmm3
  vmovss [rsi + 12], xmm4
  xor eax, eax
  ret
  refusals
finish xfmgDFTFwd_RToCCS_3_32f

#include "ccs2.inc"

#include "passes8.inc"

/* A dispatcher. */
begin xfmgDFTFwd_CToC_64fc
  sub edx, 2
  cmp edx, 62
  ja 95f
  lea rax, [rip + entries]
  mov eax, edx
  mov edx, ecx
  lea r8, [rip + entries]
  jmp [r8 + rax*8]
95:
  mov eax, -6
  ret
finish xfmgDFTFwd_CToC_64fc
.section .data.rel.ro, "aw"
  .p2align 3
entries: .quad xfmgDFTFwd_CToC_2_32fc
