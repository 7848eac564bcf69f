// xfm info: which library this is, which copy the loader took and why, on which processor.
#include <CLI/App.hpp>
#include <cstdio>
#include <cstdlib>

#include "tool/catalogue.h"
#include "tool/commands.h"
#include "tool/copies.h"
#include "tool/processor.h"
#include "xfm.h"

namespace xfm::tool {

namespace {

void run() {
  const XfmLibraryVersion& version = *xfmgenGetLibVersion();
  const Copy loaded = loaded_copy();
  const char* const tunables = std::getenv("GLIBC_TUNABLES");
  std::printf("Library     %s, version %s, of %s\n", version.name, version.version, version.buildDate);
  std::printf("Functions   %zu\n", functions().size());
  std::printf("In use      %s: %s\n", loaded.name.c_str(), loaded.path.c_str());
  std::printf("Because     %s\n", reason(loaded).c_str());
  for (const Copy& copy : copies()) {
    const char* const fits = copy.level == 1 ? "runs on any processor with AVX" : copy.level <= processor_level() ? "this processor can run it" : "this processor cannot run it";
    std::printf("%-11s %s: %s\n", copy.level == 1 ? "Copies" : "", copy.name.c_str(), fits);
  }
  std::printf("Processor   %s, level %s%s\n", processor_name().c_str(), level_name(processor_level()).c_str(), has_avx() ? "" : ", WITHOUT AVX");
  std::printf("Tunables    %s\n", tunables == nullptr ? "GLIBC_TUNABLES is not set" : tunables);
  require_avx();
}

}  // namespace

void add_info(CLI::App& app) {
  app.add_subcommand("info", "Tells the library's version, which copy the loader took and why, and the processor")->callback(run);
}

}  // namespace xfm::tool
