/* A stage that divides.
   expects: stages owngDCT4_64fg9_env8_compute not among a stage's operations
*/
#include "pieces.inc"
.hidden owngDCT4_64fg9_env8_compute
begin owngDCT4_64fg9_env8_compute
  vmulpd ymm0, ymm0, ymm1
  vdivpd ymm0, ymm0, ymm1
  vzeroupper
  ret
finish owngDCT4_64fg9_env8_compute
