/* A kernel that the count table of its family forgets.
   expects: counts xfmgDFTFwd_CToC_20_64fc
   counts: single5.tsv
*/
#include "pieces.inc"
#include "pair20.inc"
#include "single5.inc"
