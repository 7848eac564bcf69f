/* A name of the list that is not exported.
   expects: exports xfmgDFTFwd_CToC_21_64fc
   exports: xfmgDFTFwd_CToC_20_64fc xfmgDFTFwd_CToC_21_64fc
*/
#include "pieces.inc"
#include "pair20.inc"
