/* An operation of a set that the target does not ask for.
   target: v4
   expects: generation xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vrcp28pd zmm16, zmm17
#include "pair20.inc"
