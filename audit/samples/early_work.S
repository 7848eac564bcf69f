/* Work on values before the flag is known.
   expects: prologue xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define ENTER vshufpd xmm0, xmm0, xmm0, 1
#include "pair20.inc"
