#include "rdft/counts.h"

#include "generator/passes.h"

namespace xfm::rdft {

int root_order(Real c, int largest) {
  struct Root {
    Real magnitude;
    int order;
  };
  static std::vector<Root> roots;  // cosines and sines of 2*pi*k/M, by M
  static int known = 2;
  while (known < largest) {
    ++known;
    for (int k = 1; 2 * k < known; ++k)
      for (Real value : {cos_turn(k, known), sin_turn(k, known)}) roots.push_back({magnitude(value), known});
  }
  for (const Root& root : roots) {
    if (root.order > largest) break;
    if (is_zero(root.magnitude - magnitude(c))) return root.order;
  }
  return 0;
}

std::vector<char> open_cells(const Flow& flow) {
  std::vector<char> open(flow.graph.size());
  const std::vector<std::vector<int>> uses = users(flow);
  for (Ref r : flow.outputs) open[r.node] = flow.graph[r.node].has_products() && uses[r.node].empty();
  return open;
}

std::vector<char> folded_doublings(const Flow& flow) {
  std::vector<char> folded(flow.doubled.size());
  const std::vector<std::vector<int>> uses = users(flow);
  for (int i : live_nodes(flow.graph, flow.outputs)) {
    const Node& input = flow.graph[i];
    if (input.kind != Node::Kind::Input || !flow.doubled[input.cells[0]] || uses[i].size() != 1) continue;
    for (const Term& t : flow.graph[uses[i][0]].terms)
      if (t.ref.node == i) folded[input.cells[0]] = !t.coef.unit();
  }
  return folded;
}

FlowCounts count_flow(const Flow& flow) {
  FlowCounts c;
  const int length = static_cast<int>(flow.outputs.size());
  const std::vector<char> open = open_cells(flow);
  std::vector<char> widened(flow.graph.size());
  for (int i : live_nodes(flow.graph, flow.outputs)) {
    const Node& node = flow.graph[i];
    if (node.kind == Node::Kind::Input) continue;
    for (const Term& t : node.terms) {
      if (t.coef.unit()) continue;
      const Real value = t.coef.lane(0);
      ++c.multiplications;
      if (is_zero(magnitude(value) - Real(0.5))) continue;
      if (const int order = root_order(value, length)) {
        c.roots.insert(order);
      } else {
        ++c.non_root;
      }
    }
    const int additions = static_cast<int>(node.terms.size()) - 1;
    if (!flow.is_wide(i)) {
      c.single_additions += additions;
      continue;
    }
    c.double_additions += additions;
    for (const Term& t : node.terms) widened[t.ref.node] = !flow.wide[t.ref.node];
    if (!flow.wide[i]) ++(open[i] ? c.last_narrowings : c.inner_narrowings);
  }
  for (Ref r : flow.outputs)
    if (r.turn == 2) ++(open[r.node] ? c.double_additions : c.single_additions);
  c.additions = c.single_additions + c.double_additions;
  for (char w : widened) c.widenings += w;
  c.widenings += c.last_narrowings > 0;
  const std::vector<char> folded = folded_doublings(flow);
  for (size_t cell = 0; cell < flow.doubled.size(); ++cell)
    if (flow.doubled[cell]) ++(folded[cell] ? c.folded_doublings : c.doublings);
  return c;
}

}  // namespace xfm::rdft
