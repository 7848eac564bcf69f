/* An output stored twice.
   expects: extent xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define STORED vmovupd [rsi + 32], ymm2
#include "pair20.inc"
