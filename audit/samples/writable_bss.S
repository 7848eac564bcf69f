/* Zeroed writable data.
   expects: writable .bss
*/
#include "pieces.inc"
#include "pair20.inc"

.bss
.quad 0
