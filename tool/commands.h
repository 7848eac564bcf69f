// The subcommands of `xfm`; each adds itself and its options to the program.
#pragma once

namespace CLI {
class App;
}

namespace xfm::tool {

void add_info(CLI::App& app);
void add_test(CLI::App& app);
void add_bench(CLI::App& app);
void add_spectrum(CLI::App& app);
void add_compress(CLI::App& app);

}  // namespace xfm::tool
