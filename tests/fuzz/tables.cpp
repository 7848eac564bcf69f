// Random tables: the reader of rows and the list of public functions either take a table or refuse it with its file and line.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "generator/check.h"
#include "generator/functions.h"
#include "generator/table.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = "/tmp/xfm_fuzz_tables." + std::to_string(getpid());
  std::FILE* file = std::fopen(path.c_str(), "wb");
  fuzz::require(file != nullptr && std::fwrite(data, 1, size, file) == size && std::fclose(file) == 0);
  try {
    const auto list = xfm::FunctionList::read(path);
    for (const auto& function : list.functions()) {
      fuzz::require(!function.name.empty() && function.name.starts_with("xfmg"));
      (void)function.declaration();
    }
  } catch (const xfm::InputError& error) {
    fuzz::require(std::string(error.what()).starts_with(path));
  }
  std::remove(path.c_str());
  return 0;
}
