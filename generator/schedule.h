// An order of the operations that keeps few values live: recursive bisection of the graph by topological layers, then
// every value that is used once is computed right before its user. Layers are taken from both ends in turn, or always on
// the side that has taken fewer values so far. These orders, and the one in which the operations were made, are also tried
// with operations moved forward past others that wait; of all, the one is taken that the model of a core runs fastest.
//
// Creation order and depth-first order lose 1 to 40 % of time to spills, greedy orders lose parallelism; the compiler's own
// scheduler keeps whatever order it is given.
#pragma once

#include <vector>

#include "generator/core_model.h"

namespace xfm {

// The operations in order; stores are not among them (each follows its value, but not before the last load).
std::vector<int> schedule(const Program& program, int registers = kRegisters);

}  // namespace xfm
