/* A body that ends with another status than success.
   expects: status xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define CLEAN vzeroupper; mov eax, -6
#include "pair20.inc"
