/* Too large a frame, the push included.
   expects: frame xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define TESTED sub rsp, 3064; push rbx
#define LEAVE pop rbx; add rsp, 3064
#include "pair20.inc"
