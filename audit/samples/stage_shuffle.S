/* A combine stage that moves lanes.
   expects: stages owngDCT4_64fg9_env8_compute
*/
#include "pieces.inc"
.hidden owngDCT4_64fg9_env8_compute
begin owngDCT4_64fg9_env8_compute
  vmulpd ymm0, ymm0, ymm1
  vshufpd ymm0, ymm0, ymm1, 5
  vzeroupper
  ret
finish owngDCT4_64fg9_env8_compute
