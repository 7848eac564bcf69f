// The subcommands of `xfm`; each adds itself and its options to the program.
#pragma once

#include <CLI/App.hpp>

namespace xfm::tool {

void add_bench(CLI::App& app);

}  // namespace xfm::tool
