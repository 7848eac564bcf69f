/* Two components loaded at once in a scalar body.
   expects: width xfmgDFTFwd_CToC_2_32fc a scalar body moves one component at a time
*/
#include "pieces.inc"
#define WORK vmovsd xmm8, [rdi]
#include "scalar2.inc"
