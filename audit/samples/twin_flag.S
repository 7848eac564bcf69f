/* The twin gets another flag.
   expects: call xfmgDFTFwd_CToC_5_64fc the kernel's own flag
*/
#include "pieces.inc"
#define TO_TWIN mov edx, 8; jmp owngDFTFwd_CToC_5_64fc_unaligned
#include "single5.inc"
