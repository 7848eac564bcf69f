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
    refs.push_back(t.ref.turned(r.turn));
  }
  if (refs[0].node > refs[1].node) std::swap(refs[0], refs[1]);
  return refs;
}

bool loaded(const Graph& g, const std::vector<Ref>& refs) {
  return !refs.empty() && std::all_of(refs.begin(), refs.end(), [&](Ref r) { return g[r.node].kind == Node::Kind::Input; });
}

// The pairs of inputs that a butterfly's result adds up: one, or two in order of their first inputs.
std::vector<std::vector<Ref>> pairs_of(const Graph& g, Ref result) {
  const std::vector<Ref> parts = summands(g, result);
  if (parts.empty()) return {};
  if (loaded(g, parts)) return {parts};
  std::vector<std::vector<Ref>> pairs = {summands(g, parts[0]), summands(g, parts[1])};
  if (!loaded(g, pairs[0]) || !loaded(g, pairs[1])) return {};
  if (pairs[0][0].node > pairs[1][0].node) std::swap(pairs[0], pairs[1]);
  return pairs;
}

std::optional<LoadedButterfly> loaded_butterfly(const Graph& g, const Node& n) {
  if (n.kind != Node::Kind::Regroup || n.points.size() != 2 || n.points[0].lane != n.points[1].lane) return {};
  const auto low = pairs_of(g, n.points[0].ref), high = pairs_of(g, n.points[1].ref);
  if (low.empty() || low.size() != high.size()) return {};
  LoadedButterfly butterfly(low.size());
  bool gathered = false;
  for (size_t p = 0; p < low.size(); ++p)
    for (int k : {0, 1}) {
      const Ref a = low[p][k], b = high[p][k];
      const std::vector<int>& cells = g[a.node].cells;
      const int cell = cells[n.points[0].lane];
      gathered = gathered || cells[1] != cells[0] + 1;
      // A quarter turn is made for both of a pair at once.
      if (a.node != b.node || cell < 0 || (a.turn ^ low[p][0].turn) & 1 || (b.turn ^ high[p][0].turn) & 1) return {};
      butterfly[p].push_back({cell, {a.turn, b.turn}});
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
