// Prints the file that the library was loaded from: which_copy, as the loader finds it; which_copy PATH, opened by its path.
#include <dlfcn.h>

#include <cstdio>

#include "xfm.h"

int main(int argc, char** argv) {
  void* function = reinterpret_cast<void*>(&xfmgenGetLibVersion);
  if (argc > 1) {
    void* library = dlmopen(LM_ID_NEWLM, argv[1], RTLD_NOW);
    function = library ? dlsym(library, "xfmgenGetLibVersion") : nullptr;
  }
  Dl_info info;
  if (function == nullptr || dladdr(function, &info) == 0) {
    std::fprintf(stderr, "%s\n", argc > 1 ? dlerror() : "the library was not found");
    return 1;
  }
  std::puts(info.dli_fname);
}
