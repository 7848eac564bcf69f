/* The misaligned case is refused instead of handed to the twin.
   expects: call xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define TO_TWIN mov eax, -8; ret
#include "single5.inc"
