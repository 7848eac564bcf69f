/* A masked load of one element past the end of src.
   target: v4
   expects: extent xfmgDFTFwd_CToC_20_64fc
*/
#include "pieces.inc"
#define WORK masked
.macro masked
  mov ecx, 15
  kmovb k1, ecx
  vmovupd zmm16{k1}{z}, [rdi + 296]
.endm
#include "pair20.inc"
