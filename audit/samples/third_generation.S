/* A permutation of two registers in a copy for processors that have none.
   target: v3
   expects: encoding xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vpermt2pd ymm0, ymm1, ymm2
#include "pair20.inc"
