/* An imported function that is not in the list.
   expects: imports sincosf
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngTables
begin owngTables
  jmp sincosf@PLT
finish owngTables
