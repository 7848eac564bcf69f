/* The twin gets another stack.
   expects: call xfmgDFTFwd_CToC_5_64fc the stack is not as it was on entry
*/
#include "pieces.inc"
#define TO_TWIN sub rsp, 8; jmp owngDFTFwd_CToC_5_64fc_unaligned
#include "single5.inc"
