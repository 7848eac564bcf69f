// Compares forms of one kernel: rules, numbers of lanes and the scalar form, in the model of the core.
#pragma once

#include <vector>

#include "generator/pack.h"

namespace xfm::pack {

struct Form {
  Rule rule;      // one lane: the scalar program
  double cycles;  // of a call, by the model
};

// The quickest form. `scalar` is it where no packed one is quicker by a twentieth.
Form search(const Program& scalar, const std::vector<int>& lanes, const Target& target, Grid grid);

}  // namespace xfm::pack
