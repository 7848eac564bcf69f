/* An input that is never loaded.
   expects: extent xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define LAST [rdi + 256]
#include "pair20.inc"
