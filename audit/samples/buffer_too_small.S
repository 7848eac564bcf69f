/* A work buffer of another size than is stated.
   expects: call xfmgWHT_8_32f
   expects: call owngWHT_8_32f_unaligned
   imports: xfmMalloc xfmFree
*/
#include "pieces.inc"
#define BYTES 1008
#include "passes8.inc"
