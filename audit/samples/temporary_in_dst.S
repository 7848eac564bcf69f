/* An intermediate kept in dst.
   expects: attribution xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define STORED vmovupd ymm2, [rsi]
#include "pair20.inc"
