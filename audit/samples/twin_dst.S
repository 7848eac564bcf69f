/* The twin gets another dst.
   expects: call xfmgDFTFwd_CToC_5_64fc the kernel's own dst
*/
#include "pieces.inc"
#define TO_TWIN lea rsi, [rsi + 16]; jmp owngDFTFwd_CToC_5_64fc_unaligned
#include "single5.inc"
