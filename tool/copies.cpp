#include "tool/copies.h"

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "tool/processor.h"
#include "xfm.h"

namespace xfm::tool {

namespace fs = std::filesystem;

namespace {
constexpr const char* kCopiesFolder = "glibc-hwcaps";
}

Copy loaded_copy() {
  Dl_info info;
  if (dladdr(reinterpret_cast<const void*>(&xfmgenGetLibVersion), &info) == 0 || info.dli_fname == nullptr)
    throw std::runtime_error("the library in use cannot be found among the loaded ones");
  const fs::path path = fs::weakly_canonical(info.dli_fname);
  const fs::path folder = path.parent_path();
  if (folder.parent_path().filename() == kCopiesFolder)
    for (int level = 2; level <= 4; ++level)
      if (folder.filename() == level_name(level)) return {level_name(level), level, path};
  return {"base", 1, path};
}

std::vector<Copy> copies() {
  const Copy loaded = loaded_copy();
  fs::path folder = loaded.path.parent_path();
  if (loaded.level > 1) folder = folder.parent_path().parent_path();
  const fs::path file = loaded.path.filename();
  std::vector<Copy> all;
  for (int level = 1; level <= 4; ++level) {
    const fs::path path = level == 1 ? folder / file : folder / kCopiesFolder / level_name(level) / file;
    if (fs::exists(path)) all.push_back({level == 1 ? "base" : level_name(level), level, path});
  }
  return all;
}

std::string reason(const Copy& loaded) {
  const Copy* best = nullptr;
  const std::vector<Copy> all = copies();
  for (const Copy& copy : all)
    if (copy.level > 1) best = &copy;
  if (best == nullptr) return "there are no copies for newer processors beside it";
  const std::string can = "the loader sees level " + level_name(loader_level()) + " of this processor";
  if (processor_level() > loader_level() && loaded.level < best->level) return can + ", for GLIBC_TUNABLES hides the rest";
  if (loaded.level == best->level || loaded.level == loader_level()) return can;
  for (const Copy& copy : all)
    if (copy.level > loaded.level && copy.level <= loader_level())
      return "the program names its file, or LD_LIBRARY_PATH or LD_PRELOAD leads to it; " + can;
  return can;
}

Library::Library() : name_(loaded_copy().name), handle_(RTLD_DEFAULT) {}

Library::Library(std::string name, const fs::path& path)
    : name_(std::move(name)), handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw std::runtime_error(path.string() + ": cannot be loaded: " + dlerror());
}

void* Library::address(const std::string& function) const {
  void* const found = dlsym(handle_, function.c_str());
  if (found == nullptr) throw std::runtime_error(function + " is not in the library (" + name_ + ")");
  return found;
}

}  // namespace xfm::tool
