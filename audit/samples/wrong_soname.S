/* Another soname.
   expects: soname library
*/
#include "pieces.inc"
#include "pair20.inc"
