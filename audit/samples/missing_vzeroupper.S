/* 256-bit work left with dirty upper halves.
   expects: zero-upper xfmgDFTFwd_CToC_20_64fc before the return
*/
#include "pieces.inc"
#define CLEAN
#include "pair20.inc"
