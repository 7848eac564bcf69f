/* A function that DT_INIT names.
   expects: constructors DT_INIT code that runs at load or unload time
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngSetUp
begin owngSetUp
  ret
finish owngSetUp
