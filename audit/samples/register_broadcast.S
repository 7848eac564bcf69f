/* A broadcast from a register: second-generation, though from memory it would not be.
   expects: generation xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK vbroadcastsd ymm0, xmm0
#include "pair20.inc"
