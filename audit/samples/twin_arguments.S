/* The twin gets src for dst.
   expects: call xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define TO_TWIN mov rsi, rdi; jmp owngDFTFwd_CToC_5_64fc_unaligned
#include "single5.inc"
