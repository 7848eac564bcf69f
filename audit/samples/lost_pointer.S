/* A pointer that passes through a vector register and cannot be followed.
   expects: attribution xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define TESTED vmovq xmm14, rdi; vmovq rcx, xmm14
#define WORK vmovupd ymm9, [rcx + 288]
#include "pair20.inc"
