/* The same as a memory operand of an addition.
   expects: order xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define STORED vaddpd ymm9, ymm9, [rdi + 288]
#include "pair20.inc"
