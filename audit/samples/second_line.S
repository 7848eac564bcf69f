/* A body of its own for one flag: two lines where one is due.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define TESTED cmp edx, 8; jne 60f; vmovupd ymm0, [rdi]; jmp 61f; 60: vmovupd ymm0, [rdi]; 61:
#include "pair20.inc"
