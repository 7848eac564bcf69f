/* A way into the middle of the body.
   expects: straight-line xfmgDFTFwd_CToC_20_64fc without its beginning
*/
#include "pieces.inc"
#define TESTED cmp edx, 4; je 62f
#define WORK 62:
#include "pair20.inc"
