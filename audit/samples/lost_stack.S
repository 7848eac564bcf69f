/* A stack pointer from memory.
   expects: stack owngLost the stack pointer cannot be followed
   expects: stack owngLost the stack pointer is not where it was on entry
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngLost
begin owngLost
  mov rsp, [rdi]
  ret
finish owngLost
