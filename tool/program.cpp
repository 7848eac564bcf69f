#include "tool/program.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>

namespace xfm::tool {

namespace {

std::string one_line(std::string text) {
  for (char& c : text)
    if (c == '\n') c = ' ';
  return text;
}

int parse_and_run(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return 0;
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    std::string what = one_line(error.what());
    const std::vector<std::string> unknown = app.remaining(true);
    if (!unknown.empty() && what.find(unknown[0]) == std::string::npos) what = unknown[0] + " is not known: " + what;
    std::fprintf(stderr, "%s: %s (--help tells more)\n", app.get_name().c_str(), what.c_str());
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", app.get_name().c_str(), one_line(error.what()).c_str());
    return 1;
  }
}

}  // namespace

int run(CLI::App& app, int argc, char** argv) {
  app.name(std::filesystem::path(argv[0]).filename().string());
  const int status = parse_and_run(app, argc, argv);
  std::cout.flush();
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  std::fprintf(stderr, "%s: standard output cannot be written: %s\n", app.get_name().c_str(), std::strerror(errno));
  return 1;
}

}  // namespace xfm::tool
