// Complex kernels: from a plan row to the machine form of a body, with the counts held against the row.
#pragma once

#include <optional>
#include <string>

#include "dft/tables.h"
#include "generator/machine.h"

namespace xfm::dft {

struct ComplexBody {
  Program program;
  const WorkingForm* form;
  Placement placement;
  Counts counts;
};

// What to choose from, for timing one choice against another.
struct Choice {
  std::string form = {};          // only this one, where a row has it among others
  std::optional<Flow> flow = {};  // instead of the row's
};

// Builds the body of one row and direction (sign -1 forward, +1 inverse); throws InputError where the counts of the graph
// are not those of the row.
ComplexBody complex_body(const ComplexRow& row, int sign, const Choice& choice = {});

std::string describe(const ComplexBody& body);

}  // namespace xfm::dft
