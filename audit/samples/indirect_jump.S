/* A jump to an address in a register.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc an indirect jump
*/
#include "pieces.inc"
#define TESTED lea r8, [rip + 61f]; jmp r8; 61:
#include "pair20.inc"
