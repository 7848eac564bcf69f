/* A store to static memory.
   expects: attribution xfmgDFTFwd_CToC_20_64fc a store to static memory
*/
#include "pieces.inc"
#define WORK vmovupd [rip + doubles], ymm2
#include "pair20.inc"
