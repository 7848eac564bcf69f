/* A fused operation by signs in a register that a call has taken.
   target: v3
   expects: fma xfmgDFTFwd_CToC_20_64fc without a factor
   expects: call xfmgDFTFwd_CToC_20_64fc calls xfmgenGetLibVersion
   expects: zero-upper xfmgDFTFwd_CToC_20_64fc before the call
*/
#include "pieces.inc"
#include "signs.inc"
#define LEAVE vmovapd ymm11, [rip + signs]; call xfmgenGetLibVersion; vfmadd213pd ymm2, ymm11, ymm3
#include "pair20.inc"

begin xfmgenGetLibVersion
  xor eax, eax
  ret
finish xfmgenGetLibVersion
