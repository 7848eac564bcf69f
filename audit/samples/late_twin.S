/* The twin is called when src has been read.
   expects: call xfmgDFTFwd_CToC_5_64fc a call after the first access
   expects: straight-line xfmgDFTFwd_CToC_5_64fc a jump after the first access
   expects: extent xfmgDFTFwd_CToC_5_64fc is never loaded
   expects: twin-arithmetic xfmgDFTFwd_CToC_5_64fc 0 in the other
   expects: straight-line xfmgDFTFwd_CToC_5_64fc 2 straight lines
*/
#include "pieces.inc"
#define TO_TWIN vmovupd xmm0, [rdi]; jmp owngDFTFwd_CToC_5_64fc_unaligned
#include "single5.inc"
