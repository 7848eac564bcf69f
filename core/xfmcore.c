/* Stand-in for the core library, which no distribution supplies: the two allocator functions. */
#include "xfmcore.h"

#include <stdlib.h>

enum { kBlockAlignment = 64 };

void* xfmMalloc(int size) {
  if (size < 0) return NULL;
  const size_t whole_lines = ((size_t)size + kBlockAlignment) / kBlockAlignment;
  return aligned_alloc(kBlockAlignment, whole_lines * kBlockAlignment);
}

void xfmFree(void* block) { free(block); }
