// What a flow costs, by the rule that a node is one held value: a chain of sums is single precision, a node with a
// product (or a sum chosen to stand in double) is one double expression, narrowed where it ends.
#pragma once

#include <set>

#include "generator/passes.h"
#include "rdft/flow.h"

namespace xfm::rdft {

// The counts of its graph, negations of outputs among the additions, and what layout and precision add to them.
struct FlowCounts : Counts {
  int doublings = 0;        // multiplications by 2.0
  int folded_doublings = 0; // constants that took the factor 2 instead
  std::set<int> roots = {}; // the M with a constant cos or sin of 2*pi*k/M, the least for each constant
  int non_root = 0;         // multiplications by any other constant but 0.5
  int single_additions = 0, double_additions = 0;
  int widenings = 0;        // held values that enter a double expression, and the scale if it does
  int inner_narrowings = 0, last_narrowings = 0;
};

FlowCounts count_flow(const Flow& flow);

}  // namespace xfm::rdft
