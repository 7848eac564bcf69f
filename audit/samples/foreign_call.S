/* A call that is not the twin's.
   expects: call xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define LEAVE vzeroupper; call xfmgenGetLibVersion
#include "pair20.inc"

begin xfmgenGetLibVersion
  xor eax, eax
  ret
finish xfmgenGetLibVersion
