/* Streaming stores in an inner function, and no fence behind its call.
   expects: fence xfmgDCT4_64f returns with streaming stores under way
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngStream
begin owngStream
  vmovntpd [rsi], xmm0
  ret
finish owngStream
begin xfmgDCT4_64f
  sub rsp, 8
  call owngStream
  add rsp, 8
  ret
finish xfmgDCT4_64f
begin xfmgDCT4_32f
  sub rsp, 8
  call owngStream
  lock or dword ptr [rsp], 0
  add rsp, 8
  ret
finish xfmgDCT4_32f
