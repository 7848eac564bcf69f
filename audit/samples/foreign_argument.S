/* An access through an argument that the kernel does not have.
   expects: attribution xfmgDFTFwd_CToC_20_64fc an access through an argument
*/
#include "pieces.inc"
#define WORK vmovupd ymm2, [rcx]
#include "pair20.inc"
