#include "rdft/counts.h"

namespace xfm::rdft {

namespace {

// The least M up to `largest` such that c is the cosine or sine of 2*pi*k/M but for its sign, or 0; 0.5 is asked for apart.
int root_order(Real c, int largest) {
  struct Root {
    Real magnitude;
    int order;
  };
  static std::vector<Root> roots;  // by order
  for (int order = roots.empty() ? 3 : roots.back().order + 1; order <= largest; ++order)
    for (int k = 1; 2 * k < order; ++k)
      for (Real value : {cos_turn(k, order), sin_turn(k, order)}) roots.push_back({magnitude(value), order});
  for (const Root& root : roots)
    if (root.order <= largest && is_zero(root.magnitude - magnitude(c))) return root.order;
  return 0;
}

}  // namespace

FlowCounts count_flow(const Flow& flow) {
  FlowCounts c{count(flow.graph, flow.outputs)};
  const int length = static_cast<int>(flow.outputs.size());
  std::set<int> widened;
  for (int i : live_nodes(flow.graph, flow.outputs)) {
    const Node& node = flow.graph[i];
    for (const Term& t : node.terms) {
      if (t.coef.unit() || is_zero(magnitude(t.coef.lane(0)) - Real(0.5))) continue;
      const int order = root_order(t.coef.lane(0), length);
      if (order) c.roots.insert(order);
      c.non_root += order == 0;
    }
    if (!flow.is_wide(i)) continue;
    c.double_additions += static_cast<int>(node.terms.size()) - 1;
    for (const Term& t : node.terms)
      if (!flow.wide[t.ref.node]) widened.insert(t.ref.node);
    if (!flow.wide[i]) ++(flow.open[i] ? c.last_narrowings : c.inner_narrowings);
  }
  for (Ref r : flow.outputs) {
    if (r.turn != 2) continue;
    ++c.additions;
    c.double_additions += flow.open[r.node];
  }
  c.single_additions = c.additions - c.double_additions;
  c.widenings = static_cast<int>(widened.size()) + (c.last_narrowings > 0);
  for (size_t cell = 0; cell < flow.doubled.size(); ++cell)
    if (flow.doubled[cell]) ++(flow.folded[cell] ? c.folded_doublings : c.doublings);
  return c;
}

}  // namespace xfm::rdft
