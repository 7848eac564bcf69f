/* A hint to fetch a line: stages of the DCT-IV may give it, a kernel may not, even where it reads nothing.
   expects: operation xfmgDFTFwd_CToC_5_64fc
*/
#include "pieces.inc"
#define WORK prefetcht1 [rdi]
#include "single5.inc"
