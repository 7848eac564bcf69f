#include "generator/butterflies.h"

#include <algorithm>
#include <optional>

namespace xfm {

namespace {

// The two values that a node adds up, in order of their nodes; nothing if it is no such sum.
std::vector<Ref> summands(const Graph& g, Ref r) {
  std::vector<Ref> refs;
  if (!r || g[r.node].kind != Node::Kind::Sum || g[r.node].terms.size() != 2) return {};
  for (const Term& t : g[r.node].terms) {
    if (!t.coef.unit()) return {};
    refs.push_back(t.ref);
  }
  if (refs[0].node > refs[1].node) std::swap(refs[0], refs[1]);
  return refs;
}

// A sum or difference of two inputs, and how it is turned in the end.
struct InputSum {
  Ref a, b;
  int turn;
};

std::optional<InputSum> input_sum(const Graph& g, Ref r) {
  const std::vector<Ref> refs = summands(g, r);
  if (refs.empty()) return {};
  for (Ref operand : refs)
    if (g[operand.node].kind != Node::Kind::Input || operand.turn % 2) return {};
  return InputSum{refs[0], refs[1], r.turn};
}

// The sums of inputs that a butterfly's result adds up: one, or two in order of their first inputs.
std::vector<InputSum> input_sums(const Graph& g, Ref result) {
  if (const auto one = input_sum(g, result)) return {*one};
  const std::vector<Ref> parts = summands(g, result);
  if (parts.empty() || result.turn) return {};
  const auto first = input_sum(g, parts[0]), second = input_sum(g, parts[1]);
  if (!first || !second) return {};
  return first->a.node < second->a.node ? std::vector{*first, *second} : std::vector{*second, *first};
}

std::optional<LoadedButterfly> loaded_butterfly(const Graph& g, const Node& n) {
  if (n.kind != Node::Kind::Regroup || n.points.size() != 2 || n.points[0].lane != n.points[1].lane) return {};
  const int lane = n.points[0].lane;
  if (lane == kAnyLane) return {};
  const auto low = input_sums(g, n.points[0].ref), high = input_sums(g, n.points[1].ref);
  if (low.empty() || low.size() != high.size()) return {};
  LoadedButterfly butterfly;
  bool gathered = false;
  for (size_t k = 0; k < low.size(); ++k) {
    const auto point = [&](Ref in_low, Ref in_high) {
      return LoadedPoint{g[in_low.node].cells[lane], {in_low.turn == 2, in_high.turn == 2}};
    };
    if (low[k].a.node != high[k].a.node || low[k].b.node != high[k].b.node) return {};
    butterfly.push_back({{point(low[k].a, high[k].a), point(low[k].b, high[k].b)}, {low[k].turn, high[k].turn}});
    for (Ref r : {low[k].a, low[k].b}) {
      const std::vector<int>& cells = g[r.node].cells;
      if (cells[lane] < 0) return {};
      gathered = gathered || cells[1] != cells[0] + 1;
    }
  }
  if (!gathered) return {};  // whole registers are loaded at no cost
  return butterfly;
}

// Nodes that only the butterflies, or nodes that they make superfluous, would use.
std::vector<char> spared_by(const Graph& g, const std::vector<int>& live, std::span<const Point> outputs,
                            const std::map<int, LoadedButterfly>& butterflies) {
  std::vector<char> used(g.size()), spared(g.size());
  for (const Point& p : outputs) used[p.ref.node] = 1;
  for (auto i = live.rbegin(); i != live.rend(); ++i) {
    spared[*i] = !used[*i];
    if (!used[*i] || butterflies.contains(*i)) continue;
    for (const Term& t : g[*i].terms) used[t.ref.node] = 1;
    for (const Point& p : g[*i].points)
      if (p.ref) used[p.ref.node] = 1;
  }
  return spared;
}

}  // namespace

LoadedButterflies find_loaded_butterflies(const Graph& g, const std::vector<int>& live, std::span<const Point> outputs) {
  LoadedButterflies found;
  for (int i : live)
    if (const auto butterfly = loaded_butterfly(g, g[i])) found.by_node.emplace(i, *butterfly);
  // One whose sums are made anyway is no gain.
  size_t before;
  do {
    before = found.by_node.size();
    found.spared = spared_by(g, live, outputs, found.by_node);
    std::erase_if(found.by_node, [&](const auto& b) {
      const std::vector<Point>& lanes = g[b.first].points;
      return !found.spared[lanes[0].ref.node] || !found.spared[lanes[1].ref.node];
    });
  } while (found.by_node.size() != before);
  return found;
}

}  // namespace xfm
