#include <cstdio>
#include "generator/program.h"
#include "rdft/rows.h"
namespace { void program(int argc, char** argv) {
  for (auto f : {xfm::rdft::Family::Forward, xfm::rdft::Family::Inverse, xfm::rdft::Family::Hartley}) try {
    auto rows = xfm::rdft::read_rows(argv[1], f); printf("%zu\n", rows.size()); } catch (xfm::InputError& e) { puts(e.what()); }
}}
int main(int argc, char** argv) { return xfm::run_program(argc, argv, program); }
