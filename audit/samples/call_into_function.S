/* A call into the middle of a function.
   expects: call owngCaller calls what is no function of the library
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngCaller
begin owngCaller
  call owngCaller + 5
  ret
finish owngCaller
