/* A call through a register.
   expects: call xfmgDFTFwd_CToC_20_64fc calls an unknown function
*/
#include "pieces.inc"
#define LEAVE vzeroupper; call r8
#include "pair20.inc"
