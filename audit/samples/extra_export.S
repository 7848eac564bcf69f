/* An exported name that is not in the list.
   expects: exports xfmgExtra
   exports: xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#include "pair20.inc"

begin xfmgExtra
  ret
finish xfmgExtra
