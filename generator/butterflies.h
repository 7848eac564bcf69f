// Radix-2 and radix-4 butterflies of loaded values, of which two results stand side by side in a register. Made on whole
// registers they need a shuffle to load each operand and others to bring results of one butterfly together. With each
// operand loaded into both lanes, and signs by lane, they need none, or one for the quarter turns of a radix-4 butterfly:
// (a + b, a - b) is (a, a) + (b, b) * (1, -1). The same sums are formed, so the results are the same.
#pragma once

#include <map>
#include <span>
#include <vector>

#include "generator/graph.h"

namespace xfm {

// A value of the source in both lanes, subtracted or not.
struct LoadedPoint {
  int cell;
  bool subtracted[2];
};
// The sum of two, turned by quarters in each lane.
struct LoadedSum {
  LoadedPoint points[2];
  int turn[2];
};
using LoadedButterfly = std::vector<LoadedSum>;  // one or the sum of two

struct LoadedButterflies {
  std::map<int, LoadedButterfly> by_node;  // regrouped nodes
  std::vector<char> spared;                // live nodes that nothing else uses
};

LoadedButterflies find_loaded_butterflies(const Graph& g, const std::vector<int>& live, std::span<const Point> outputs);

}  // namespace xfm
