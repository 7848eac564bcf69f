// The processor as the library and the dynamic loader see it.
#pragma once

#include <string>

namespace xfm::tool {

[[nodiscard]] bool has_avx();
// std::runtime_error of one line where the processor lacks what every transform needs.
void require_avx();

[[nodiscard]] std::string processor_name();

// Levels of x86-64, 1 to 4: the processor's, and what the dynamic loader makes of it (GLIBC_TUNABLES may lower it).
[[nodiscard]] int processor_level();
[[nodiscard]] int loader_level();
// "x86-64-v3"; "x86-64" for level 1.
[[nodiscard]] std::string level_name(int level);

}  // namespace xfm::tool
