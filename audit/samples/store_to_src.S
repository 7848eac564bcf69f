/* A store to src.
   expects: attribution xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vmovupd [rdi + 32], ymm9
#include "pair20.inc"
