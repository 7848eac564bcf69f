/* Bytes that are no instruction.
   expects: decoding xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define LEAVE .byte 0x06
#include "pair20.inc"
