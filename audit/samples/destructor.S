/* A function that runs at unload time.
   expects: constructors DT_FINI_ARRAY
*/
#include "pieces.inc"
#include "pair20.inc"

begin owngTearDown
  ret
finish owngTearDown
.section .fini_array, "aw"
.quad owngTearDown
