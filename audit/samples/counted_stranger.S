/* A row of counts for a function that is not there.
   counts: stranger.tsv
   expects: counts xfmgDFTFwd_CToC_24_64fc but not in the library
*/
#include "pieces.inc"
#include "pair20.inc"
