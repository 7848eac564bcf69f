/* A request for an executable stack.
   expects: executable-stack library
*/
#include "pieces.inc"
#include "pair20.inc"
