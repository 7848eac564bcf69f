/* An integer instruction that came with the second generation.
   expects: generation xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define TESTED andn rcx, rcx, rdx
#include "pair20.inc"
