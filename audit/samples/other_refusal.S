/* A refusal with a status of its own.
   expects: status xfmgDFTFwd_CToC_20_64fc returns -5 without a body
*/
#include "pieces.inc"
#define TESTED cmp edx, 77; jne 63f; mov eax, -5; ret; 63:
#include "pair20.inc"
