/* What a program does that may run on a processor without AVX: it asks, and calls nothing but the version record. */
#include <stdio.h>

#include "core/xfmcore.h"
#include "xfm.h"

int main(void) {
  const XfmLibraryVersion* version = xfmgenGetLibVersion();
  void* block = xfmMalloc(64);
  const int usable = __builtin_cpu_supports("avx");
  if (block == NULL) return 1;
  xfmFree(block);
  printf("%d.%d on a processor %s\n", version->major, version->minor, usable ? "with AVX" : "without AVX: not usable");
  return usable ? 0 : 1;
}
