/* A kernel without its twin.
   expects: twins xfmgDFTFwd_CToC_5_64fc
   expects: call xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define NO_TWIN
#define TO_TWIN mov eax, -8; ret
#include "single5.inc"
