/* A pointer read back from a stack slot that was overwritten.
   expects: attribution xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define TESTED mov [rsp - 8], rdi; vmovupd [rsp - 16], xmm0
#define WORK mov rcx, [rsp - 8]; vmovupd ymm9, [rcx + 288]
#include "pair20.inc"
