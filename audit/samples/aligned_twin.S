/* A twin with aligned loads.
   expects: alignment owngDFTFwd_CToC_5_64fc_unaligned
*/
#include "pieces.inc"
#define TWIN_LOAD vmovapd
#include "single5.inc"
