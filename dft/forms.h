// The working forms of complex kernels, one row each: a new one is a row here and a lowering beside those of generator/lanes.h.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "generator/gate.h"
#include "generator/lanes.h"

namespace xfm::dft {

struct WorkingForm {
  std::string name;         // in plans/complex_plans.tsv, reports and notes
  Type type;                // of the registers
  int lanes;                // complex numbers that go through the same operations
  bool widens;              // products, and the sums they stand in, are made in double and rounded once
  std::vector<Gate> gates;  // alignment classes that a kernel in this form may have
  Program (*lower)(const Graph& graph, std::span<const Point> outputs, Type type);
};

// Null where a precision has no form of that name.
const WorkingForm* working_form(int precision, std::string_view name);

}  // namespace xfm::dft
