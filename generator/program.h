// The frame of every generator program's main.
#pragma once

#include <cstdio>
#include <exception>

#include "generator/check.h"

namespace xfm {

// Runs `program`, prints an error to stderr and gives the exit code: 0, 1 for bad input, 2 for anything else.
inline int run_program(int argc, char** argv, void (*program)(int argc, char** argv)) {
  try {
    program(argc, argv);
    return 0;
  } catch (const InputError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 2;
  }
}

}  // namespace xfm
