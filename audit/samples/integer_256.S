/* A 256-bit integer operation.
   expects: generation xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vpxor ymm0, ymm0, ymm1
#include "pair20.inc"
