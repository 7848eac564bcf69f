/* The same through a pointer that was moved, advanced and kept on the stack.
   expects: order xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define TESTED lea rcx, [rdi + 256]; mov [rsp - 8], rcx
#define STORED mov r9, [rsp - 8]; add r9, 32; vmovupd ymm9, [r9]
#include "pair20.inc"
