/* Code that can be written.
   expects: writable .code 1 writable bytes
   expects: writable library a segment both writable and executable
   expects: protection .code stays writable
*/
#include "pieces.inc"
#include "pair20.inc"

.section .code, "awx"
.hidden owngWritable
begin owngWritable
  ret
finish owngWritable
