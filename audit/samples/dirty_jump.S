/* 256-bit work left dirty before a jump out of the function.
   expects: zero-upper owngFirst before the jump
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngFirst
begin owngFirst
  vaddpd ymm0, ymm0, ymm0
  jmp owngSecond
finish owngFirst
.hidden owngSecond
begin owngSecond
  ret
finish owngSecond
