/* A table entry of an exported function that is left to the loader.
   expects: binding xfmgDFTFwd_CToC_20_64fc bound by the loader
*/
#include "pieces.inc"
#include "pair20.inc"
.section .data.rel.ro, "aw"
  .p2align 3
  .quad xfmgDFTFwd_CToC_20_64fc
