/* The same at 128 bits, in single precision form.
   expects: generation xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define WORK vbroadcastss xmm2, xmm2
#include "single5.inc"
