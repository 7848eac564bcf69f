// The C++ text of bodies and of the units around them. One operation is one intrinsic; the body of a kernel is written
// once, as a template over the access to `src` and `dst`, and instantiated with aligned and unaligned moves.
#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "generator/gate.h"
#include "generator/machine.h"
#include "generator/output.h"  // IWYU pragma: export

namespace xfm {

// Names that a body uses: the arrays it reads and writes (pointers to elements of the precision) and its pool.
struct BodyNames {
  std::vector<std::string> sources = {"x"};
  std::vector<std::string> targets = {"y"};
  std::string pool;
  std::string access = "Access";
  std::string scale = "scale";  // pointer to the scale
  bool loads_first = true;      // no store before the last load; false where sources and targets are never one array
  int scale_lanes = 2;          // equal elements behind it
};

// Statements of a program in scheduled order.
std::vector<std::string> body_text(const Program& program, const BodyNames& names);
// The definition of a program's pool, with three scales of `scale_lanes` equal elements in front when there are any.
std::string pool_text(const Program& program, const std::string& name, bool single, const std::vector<Real>& scales,
                      int scale_lanes);

struct Kernel {
  std::string symbol;   // exported name; its twin and pool are named after it
  std::string element;  // of src and dst, as the public header names it
  bool single = true;   // precision of a component
  Gate gate = Gate::Plain;
  int length = 0;
  int scale_by_1 = 0, scale_by_2 = 0;  // which of 1, 1/sqrt(N), 1/N the flags 1 and 2 select
  int scale_lanes = 1;
  std::string note;  // plan and counts, for the reader of the unit
  Program program;
  std::vector<std::string> statements = {};  // of a body that is more than one program: over x, y, scale and the buffer
  bool work_buffer = false;  // takes a fourth argument, void* buffer
};

// One fixed-size kernel: pool, body, twin where its gate has one, and the exported function with its prologue.
std::string kernel_text(const Kernel& kernel);
// The head of a unit, up to the first kernel.
std::string unit_head(const std::string& unit, const std::string& maker);

}  // namespace xfm
