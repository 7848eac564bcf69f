/* An address that depends on an argument.
   expects: attribution xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define TESTED mov ecx, edx
#define WORK vmovupd ymm9, [rdi + rcx]
#include "pair20.inc"
