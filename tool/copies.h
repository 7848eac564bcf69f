// The copies of the library: the base, and beside it those for newer processors.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace xfm::tool {

struct Copy {
  std::string name;  // "base" or its folder, "x86-64-v3"
  int level = 1;     // of x86-64 from which on the loader takes it
  std::filesystem::path path;
};

// The copy that this program runs with.
[[nodiscard]] Copy loaded_copy();
// The base and the copies beside it, as far as they are there, in ascending order of level.
[[nodiscard]] std::vector<Copy> copies();
// Why the loader took the loaded one, in words.
[[nodiscard]] std::string reason(const Copy& loaded);

// A library whose functions are found by name.
class Library {
 public:
  // What this program runs with.
  Library();
  // Another one beside it; std::runtime_error if it cannot be loaded.
  Library(std::string name, const std::filesystem::path& path);

  [[nodiscard]] const std::string& name() const { return name_; }
  template <class Function>
  Function* find(const std::string& function) const {
    return reinterpret_cast<Function*>(address(function));
  }

 private:
  [[nodiscard]] void* address(const std::string& function) const;

  std::string name_;
  void* handle_;
};

}  // namespace xfm::tool
