/* 256-bit work left dirty before a call.
   expects: zero-upper xfmgDFTFwd_CToC_20_64fc before the call
   expects: call xfmgDFTFwd_CToC_20_64fc calls owngHelper
*/
#include "pieces.inc"
#define LEAVE push rax; call owngHelper; pop rax
#include "pair20.inc"

.hidden owngHelper
begin owngHelper
  ret
finish owngHelper
