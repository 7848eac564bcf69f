/* Functions bound at their first call.
   imports: xfmMalloc xfmFree
   expects: protection library functions are bound at their first call
   expects: protection .got.plt stays writable
*/
#include "pieces.inc"
#include "passes8.inc"
