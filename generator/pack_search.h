// Compares forms of one kernel: rules, numbers of lanes and the scalar form, in the model of the core.
#pragma once

#include <vector>

#include "generator/pack.h"

namespace xfm::pack {

struct Form {
  Rule rule;      // one lane: the scalar program
  double cycles;  // of a call, by the model
};

// The best forms of every number of lanes that doubles of the target have, and the scalar form, the quickest first. To be
// ahead of the scalar form a packed one has to be quicker by a twentieth.
std::vector<Form> search(const Program& scalar, const Target& target, Grid grid);

}  // namespace xfm::pack
