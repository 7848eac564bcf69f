/* Code between functions.
   expects: coverage .text
*/
#include "pieces.inc"
#include "pair20.inc"

  vaddpd ymm0, ymm0, ymm1
