/* A needed library that is in the list and not in the file.
   expects: needed libxfmcorex64.so.6.1
   needed: libxfmcorex64.so.6.1
*/
#include "pieces.inc"
#include "pair20.inc"
