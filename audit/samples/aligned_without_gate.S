/* An aligned load of an array whose alignment nothing tested.
   expects: alignment xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define LOAD vmovapd
#include "pair20.inc"
