/* A block is asked for when the work is done.
   imports: xfmMalloc xfmFree
   expects: call xfmgWHT_8_32f allocates after the first access
   expects: call owngWHT_8_32f_unaligned allocates after the first access
*/
#include "pieces.inc"
#define FREE test r13, r13; je 62f; mov edi, BYTES; call xfmMalloc@PLT; mov rdi, rax
#include "passes8.inc"
