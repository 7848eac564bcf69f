/* Code that the loader must patch.
   expects: text-relocations library
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngAddress
begin owngAddress
  movabs rax, offset doubles
  ret
finish owngAddress
