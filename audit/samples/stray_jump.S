/* A jump into the middle of an instruction.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc inside an instruction
*/
#include "pieces.inc"
#define TESTED cmp edx, 9; je 61f + 1; 61: nop dword ptr [rax + rax]
#include "pair20.inc"
