/* Unaligned moves of the work buffer.
   expects: buffer xfmgWHT_8_32f
   expects: buffer owngWHT_8_32f_unaligned
   imports: xfmMalloc xfmFree
*/
#include "pieces.inc"
#define COLUMN_LOAD vmovups
#include "passes8.inc"
