/* A variable among the exported names.
   expects: exports xfmgTable
*/
#include "pieces.inc"
#include "pair20.inc"

.section .rodata
.globl xfmgTable
.type xfmgTable, @object
.size xfmgTable, 8
xfmgTable: .quad 1
