/* A function that DT_FINI names.
   expects: constructors DT_FINI code that runs at load or unload time
*/
#include "pieces.inc"
#include "pair20.inc"

.hidden owngTearDown
begin owngTearDown
  ret
finish owngTearDown
