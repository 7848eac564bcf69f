// The flow of one kernel: its plan as an expression graph from loaded to stored values, before layout and precision.
//
// Spectra are listed in one order throughout: R_0, R_1, I_1, R_2, I_2, ..., for even N ending with R_(N/2).
#pragma once

#include <vector>

#include "flows/plan.h"
#include "generator/graph.h"

namespace xfm::rdft {

enum class Family { Forward, Inverse, Hartley };

// Sums of held values that stand in double precision, so that they need no widening of their own: the number of additions
// of each, in the order of the candidates. `shared` admits sums that several products use, `loads` those of loaded values.
struct WideSums {
  std::vector<int> additions;
  bool shared = false, loads = false;
};

// What a row makes a flow from. A Hartley kernel gets its bins from a forward flow by H = R -+ I behind it, or `transposed`:
// from the transposed network with sums and differences x[k] +- x[N-k] in front of it (the Hartley matrix is symmetric).
struct FlowPlan {
  Family family;
  int length;
  Plan plan;
  bool transposed = false;
  WideSums wide = {};
};

struct Flow {
  Graph graph;
  std::vector<Ref> outputs;   // in spectrum order (forward) or sample order; a turn of 2 is a negated cell
  std::vector<char> doubled;  // inverse: by input cell, whether the bin stands for its conjugate too
  std::vector<char> folded;   // of these, whether the one constant that the value meets takes the factor 2
  std::vector<char> wide;     // by node: a sum that stands in double precision
  std::vector<char> open;     // by node: an expression that ends a cell and nothing else, so not narrowed before the scale

  // A node that is one double expression in the single-precision kernel.
  bool is_wide(int node) const { return wide[node] || graph[node].has_products(); }
  // One that is not narrowed where it ends.
  bool stays_open(int node) const { return wide[node] || open[node]; }
};

// Throws InputError if a stated sum in double has no candidate.
Flow make_flow(const FlowPlan& plan);

}  // namespace xfm::rdft
