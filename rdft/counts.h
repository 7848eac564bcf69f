// What a flow costs, by the rule that a node is one held value: a chain of sums is single precision, a node with a
// product (or a sum chosen to stand in double) is one double expression, narrowed where it ends.
#pragma once

#include <set>

#include "rdft/flow.h"

namespace xfm::rdft {

struct FlowCounts {
  int additions = 0;        // negations, which subtract from zero, among them
  int multiplications = 0;  // neither scale nor doublings
  int doublings = 0;        // multiplications by 2.0
  int folded_doublings = 0; // constants that took the factor 2 instead
  std::set<int> roots;      // the M with a constant cos or sin of 2*pi*k/M, the least for each constant
  int non_root = 0;         // multiplications by any other constant but 0.5
  int single_additions = 0, double_additions = 0;
  int widenings = 0;        // held values that enter a double expression, and the scale if it does
  int inner_narrowings = 0, last_narrowings = 0;
};

FlowCounts count_flow(const Flow& flow);

// By node: a double expression that ends a cell and nothing else, so that it is still open when the scale comes.
std::vector<char> open_cells(const Flow& flow);
// By input cell: the doubling is taken into the one constant that the value meets.
std::vector<char> folded_doublings(const Flow& flow);

// The least M up to `largest` such that |c| is the cosine or sine of 2*pi*k/M, or 0; 0.5 is asked for apart.
int root_order(Real c, int largest);

}  // namespace xfm::rdft
