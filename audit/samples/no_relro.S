/* A table of pointers that the loader leaves writable.
   expects: protection .data.rel.ro stays writable
   expects: protection .dynamic stays writable
*/
#include "pieces.inc"
#include "pair20.inc"
.section .data.rel.ro, "aw"
  .p2align 3
  .quad xfmgDFTFwd_CToC_20_64fc
