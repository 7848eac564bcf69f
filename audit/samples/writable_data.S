/* Initialised writable data.
   expects: writable .data
*/
#include "pieces.inc"
#include "pair20.inc"

.data
.quad 1
