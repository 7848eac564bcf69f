/* A return with the stack pointer elsewhere.
   expects: stack xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define LEAVE push rbx
#include "pair20.inc"
