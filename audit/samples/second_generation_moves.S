/* More forms of the second generation: cross-lane permute, integer insert, non-temporal load, gather-free blend.
   expects: generation xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vpermpd ymm2, ymm2, 27; vinserti128 ymm3, ymm3, xmm2, 1; vpblendd ymm4, ymm4, ymm5, 1
#include "pair20.inc"
