/* No symbol table: nothing internal can be found.
   expects: symbols library
*/
#include "pieces.inc"
#include "pair20.inc"
