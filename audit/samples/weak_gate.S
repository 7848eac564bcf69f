/* A gate that tests too few bits.
   expects: alignment xfmgDFTFwd_CToC_5_64fc
   expects: gate xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define GATE 7
#include "single5.inc"
