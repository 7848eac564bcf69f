/* Two lines of one kernel, one with an addition more.
   expects: twin-arithmetic xfmgDFTInv_CToC_2_64fc adds: 2 in one line, 3 in the other
*/
#include "pieces.inc"
#define SECOND_WORK vaddpd xmm3, xmm3, xmm1
#include "two_lines.inc"
