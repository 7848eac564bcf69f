/* A status that depends on the data.
   expects: status xfmgDFTFwd_CToC_20_64fc the status after the body cannot be told
*/
#include "pieces.inc"
#define CLEAN vzeroupper; mov eax, edx
#include "pair20.inc"
