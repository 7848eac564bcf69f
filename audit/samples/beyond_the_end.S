/* A load past the end of src.
   expects: extent xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vmovupd ymm11, [rdi + 304]
#include "pair20.inc"
