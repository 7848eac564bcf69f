/* A load by an instruction that names no address.
   expects: attribution xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define STORED mov rcx, rsi; lodsd; mov rsi, rcx
#include "pair20.inc"
