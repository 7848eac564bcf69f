// The command line tool of the library.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include "tool/commands.h"
#include "tool/program.h"
#include "xfm.h"

int main(int argc, char** argv) {
  CLI::App app("Fixed-size signal transforms: what this library is here, whether it is right, how fast it is, what it does to sound.");
  app.set_version_flag("--version", std::string("xfm, library ") + xfmgenGetLibVersion()->name + ", version " + xfmgenGetLibVersion()->version);
  app.require_subcommand(1);
  using namespace xfm::tool;
  for (const auto add : {add_info, add_test, add_bench, add_spectrum, add_compress}) add(app);
  return run(app, argc, argv);
}
