/* A jump after the first load.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc a jump after the first access
*/
#include "pieces.inc"
#define WORK jmp 60f; 60:
#include "pair20.inc"
