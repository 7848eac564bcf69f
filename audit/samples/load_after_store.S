/* A load of src after the first store to dst.
   expects: order xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define STORED vmovupd ymm9, [rdi + 288]
#include "pair20.inc"
