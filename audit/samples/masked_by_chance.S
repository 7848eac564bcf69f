/* A masked load by a mask that the audit cannot tell.
   target: v4
   expects: extent xfmgDFTFwd_CToC_20_64fc
   expects: operation xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK masked
.macro masked
  vcmppd k1, ymm0, ymm1, 1
  vmovupd zmm16{k1}{z}, [rdi + 296]
.endm
#include "pair20.inc"
