/* A twin that no kernel has.
   expects: twins owngDFTFwd_CToC_20_64fc_unaligned
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngDFTFwd_CToC_20_64fc_unaligned
begin owngDFTFwd_CToC_20_64fc_unaligned
  ret
finish owngDFTFwd_CToC_20_64fc_unaligned
