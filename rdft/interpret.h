// What the flow of a real transform computes, to the last bit: the definition of its kernels. Sums go from the left, beginning
// with the first term that is not subtracted. In single precision a node with products, or a sum chosen for it, is made in
// double and rounded once: where it ends, or behind the scale if it is an output and nothing else.
#pragma once

#include <algorithm>
#include <span>
#include <vector>

#include "generator/passes.h"
#include "rdft/flow.h"
#include "rdft/layout.h"

namespace xfm::rdft {

template <class T>
class FlowInterpreter {
 public:
  explicit FlowInterpreter(const Flow& flow) : flow_(flow), live_(live_nodes(flow.graph, flow.outputs)) {}

  // The outputs times a scale, in the places that a layout gives them; so are the inputs read.
  std::vector<T> run(std::span<const T> source, Layout from, Layout to, T scale) const {
    const int n = static_cast<int>(flow_.outputs.size());
    std::vector<double> values(flow_.graph.size());  // which hold every value of T
    for (int i : live_) {
      const Node& node = flow_.graph[i];
      if (node.kind == Node::Kind::Input) {
        const T loaded = source[position(from, n, node.cells[0])];
        values[i] = flow_.doubled[node.cells[0]] ? 2 * loaded : loaded;
      } else {
        values[i] = !flow_.is_wide(i) ? sum<T>(node, values) : rounded(sum<double>(node, values), flow_.stays_open(i));
      }
    }
    const std::vector<int> zeros = zero_positions(to, n);
    std::vector<T> target(n + zeros.size());
    for (int place = 0; place < n; ++place) {
      const Ref r = flow_.outputs[place];
      const bool negated = r.turn == 2;
      const double value = values[r.node];
      target[position(to, n, place)] = flow_.stays_open(r.node) ? scaled<double>(value, scale, negated) : scaled<T>(value, scale, negated);
    }
    return target;
  }

 private:
  static double rounded(double x, bool open) { return open ? x : static_cast<double>(static_cast<T>(x)); }

  template <class U>
  static T scaled(double value, T scale, bool negated) {
    const U product = static_cast<U>(scale) * static_cast<U>(value);
    return static_cast<T>(negated ? U(0) - product : product);
  }

  template <class U>
  static U sum(const Node& node, const std::vector<double>& values) {
    const auto term = [&](const Term& t) {
      const U value = static_cast<U>(values[t.ref.node]);
      return t.coef.unit() ? value : static_cast<U>(t.coef.lane(0)) * value;
    };
    const auto first = std::ranges::find_if(node.terms, [](const Term& t) { return t.ref.turn == 0; });
    U all = term(*first);
    for (auto t = node.terms.begin(); t != node.terms.end(); ++t) {
      if (t == first) continue;
      all = t->ref.turn == 0 ? all + term(*t) : all - term(*t);
    }
    return all;
  }

  const Flow& flow_;
  const std::vector<int> live_;
};

}  // namespace xfm::rdft
