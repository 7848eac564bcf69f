/* Thread-local data.
   expects: thread-storage library
*/
#include "pieces.inc"
#include "pair20.inc"

.section .tbss, "awT", @nobits
.quad 0
