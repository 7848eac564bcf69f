// The graph of H(2^order): what a kernel computes, however its plan divides the levels into passes.
#pragma once

#include <vector>

#include "generator/graph.h"

namespace xfm::wht {

struct Levels {
  Graph graph;
  std::vector<Point> outputs;
};

inline Levels levels(int order) {
  Levels made;
  std::vector<Ref> values;
  for (int i = 0; i < 1 << order; ++i) values.push_back(made.graph.input(i));
  for (size_t distance = 1; distance < values.size(); distance *= 2)
    for (size_t i = 0; i < values.size(); ++i) {
      if (i & distance) continue;
      const Ref a = values[i], b = values[i + distance];
      values[i] = made.graph.add(a, b);
      values[i + distance] = made.graph.sub(a, b);
    }
  for (const Ref r : values) made.outputs.push_back({r, 0});
  return made;
}

}  // namespace xfm::wht
