/* Two names for one body.
   expects: folding xfmgDFTInv_CToC_20_64fc
*/
#include "pieces.inc"
#include "pair20.inc"

.globl xfmgDFTInv_CToC_20_64fc
.type xfmgDFTInv_CToC_20_64fc, @function
.set xfmgDFTInv_CToC_20_64fc, xfmgDFTFwd_CToC_20_64fc
.size xfmgDFTInv_CToC_20_64fc, . - xfmgDFTFwd_CToC_20_64fc
