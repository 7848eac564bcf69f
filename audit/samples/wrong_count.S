/* Counts that differ from the table: one addition and one shuffle too many.
   expects: counts xfmgDFTFwd_CToC_20_64fc
   expects: counts xfmgDFTFwd_CToC_20_64fc
   counts: pair20.tsv
*/
#include "pieces.inc"
#define WORK vaddpd ymm2, ymm2, ymm3; vshufpd ymm3, ymm3, ymm3, 5
#include "pair20.inc"
