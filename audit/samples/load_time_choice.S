/* A function that is chosen by code at load time.
   expects: constructors owngChoice
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngChoice
begin owngChoice
  lea rax, [rip + owngChoice]
  ret
finish owngChoice
.type owngChoice, @gnu_indirect_function
