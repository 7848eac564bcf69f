/* A needed library that is not in the list.
   expects: needed libm.so.6
*/
#include "pieces.inc"
#include "pair20.inc"
