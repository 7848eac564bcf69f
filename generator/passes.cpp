#include "generator/passes.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm {

std::vector<int> live_nodes(const Graph& g, std::span<const Ref> outputs) {
  std::vector<char> seen(g.size());
  std::vector<int> stack;
  const auto visit = [&](Ref r) {
    if (r && !seen[r.node]) seen[r.node] = 1, stack.push_back(r.node);
  };
  for (Ref r : outputs) visit(r);
  while (!stack.empty()) {
    const Node& n = g[stack.back()];
    stack.pop_back();
    for (const Term& t : n.terms) visit(t.ref);
    for (const Point& p : n.points) visit(p.ref);
  }
  std::vector<int> live;
  for (int i = 0; i < g.size(); ++i)
    if (seen[i]) live.push_back(i);
  return live;
}

namespace {

// Distinct products; `of` names the value that is multiplied.
template <class Of>
int distinct_products(const Graph& g, std::span<const Ref> outputs, Of of) {
  std::vector<std::pair<int, std::vector<__int128>>> products;
  for (int i : live_nodes(g, outputs))
    for (const Term& t : g[i].terms)
      if (!t.coef.unit()) products.emplace_back(of(t.ref), t.coef.digits());
  std::sort(products.begin(), products.end());
  return static_cast<int>(std::unique(products.begin(), products.end()) - products.begin());
}

}  // namespace

Counts count(const Graph& g, std::span<const Ref> outputs) {
  Counts c;
  for (int i : live_nodes(g, outputs))
    if (g[i].kind == Node::Kind::Sum) c.additions += static_cast<int>(g[i].terms.size()) - 1;
  c.multiplications = distinct_products(g, outputs, [](Ref r) { return r.node; });
  return c;
}

int products_with_turns(const Graph& g, std::span<const Ref> outputs) {
  return distinct_products(g, outputs, [](Ref r) { return 2 * r.node + r.turn % 2; });
}

std::vector<Ref> transpose(const Graph& g, std::span<const int> inputs, std::span<const Ref> outputs, Graph& target,
                           std::span<const Ref> feed) {
  std::vector<std::vector<Term>> uses(g.size());
  std::vector<OperandLabel> labels(g.size());  // a node of the result does what the users of its original did
  const auto made = [&](int i) {
    const Graph::Loop loop(target, labels[i].empty() ? g[i].label : labels[i].label());
    return target.lin(uses[i]);
  };
  for (size_t i = 0; i < outputs.size(); ++i)
    if (outputs[i]) uses[outputs[i].node].push_back({1, feed[i].turned(outputs[i].turn)});
  std::vector<char> end(g.size());
  for (int i : inputs) end[i] = 1;
  for (int i = g.size() - 1; i >= 0; --i) {
    if (uses[i].empty() || end[i]) continue;
    check(g[i].kind == Node::Kind::Sum, "a transposed network ends at its inputs");
    const Ref value = made(i);
    for (int place = 0; const Term& t : g[i].terms) {
      uses[t.ref.node].push_back({t.coef, value.turned(t.ref.turn)});
      labels[t.ref.node].taken_by(g[i].label, place++);
    }
  }
  std::vector<Ref> result;
  for (int i : inputs) result.push_back(made(i));
  return result;
}

namespace {

// Makes these nodes again in another graph with other inputs and terms: input(cells), and terms(i, renewed) of node i.
template <class Input, class Terms>
void repeat(const Graph& g, const std::vector<int>& live, std::vector<Ref>& outputs, Graph& out, const Input& input, const Terms& terms) {
  std::vector<Ref> made(g.size());
  const auto renewed = [&](Ref r) { return r ? made[r.node].turned(r.turn) : r; };
  for (int i : live) {
    const Node& n = g[i];
    if (n.kind == Node::Kind::Input) {
      made[i] = input(n.cells);
    } else if (n.kind == Node::Kind::Regroup) {
      std::vector<Point> points = n.points;
      for (Point& p : points) p.ref = renewed(p.ref);
      made[i] = out.regroup(points);
    } else {
      const std::vector<Term> sum = terms(i, renewed);
      const Graph::Loop loop(out, n.label);
      made[i] = out.lin(sum);
    }
  }
  for (Ref& r : outputs) r = renewed(r);
}

template <class Terms>
Graph rebuilt(const Graph& g, const std::vector<int>& live, std::vector<Ref>& outputs, const Terms& terms) {
  Graph out(g.lanes());
  repeat(g, live, outputs, out, [&](const std::vector<int>& cells) { return out.input(cells); }, terms);
  return out;
}

// The terms of a node in the graph that is made anew.
template <class Renewed>
std::vector<Term> renewed_terms(std::vector<Term> terms, const Renewed& renewed) {
  for (Term& t : terms) t.ref = renewed(t.ref);
  return terms;
}

struct Use {
  int user;
  bool product;
};

class Merger {
 public:
  Merger(const Graph& g, std::span<const Ref> outputs) : g_(g), terms_(g.size()), output_(g.size()) {
    live_ = live_nodes(g, outputs);
    for (int i : live_) terms_[i] = g[i].terms;
    for (Ref r : outputs)
      if (r) output_[r.node] = 1;
  }

  bool round() {
    bool moved = false;
    std::vector<std::vector<Use>> uses(g_.size());
    for (int i : live_) {
      for (const Term& t : terms_[i]) uses[t.ref.node].push_back({i, !t.coef.unit()});
      for (const Point& p : g_[i].points)
        if (p.ref) uses[p.ref.node].push_back({i, false});
    }
    std::vector<char> touched(g_.size());
    for (int v : live_) {
      if (!may_move(v, uses[v])) continue;
      const bool clear = std::none_of(uses[v].begin(), uses[v].end(),
                                      [&](const Use& u) { return touched[u.user] || shares_operand(u.user, v); });
      if (!clear || touched[v]) continue;
      for (const Use& u : uses[v]) {
        absorb(u.user, v);
        touched[u.user] = 1;
      }
      terms_[v].clear();
      touched[v] = 1;
      moved = true;
    }
    std::erase_if(live_, [&](int i) { return g_[i].kind == Node::Kind::Sum && terms_[i].empty(); });
    return moved;
  }

  Graph result(std::vector<Ref>& outputs) const {
    return rebuilt(g_, live_, outputs, [&](int i, const auto& renewed) { return renewed_terms(terms_[i], renewed); });
  }

 private:
  bool may_move(int v, const std::vector<Use>& uses) const {
    if (output_[v] || terms_[v].empty() || uses.size() != 1 || !uses[0].product) return false;
    return std::none_of(terms_[v].begin(), terms_[v].end(), [](const Term& t) { return t.coef.unit_somewhere(); });
  }

  bool shares_operand(int user, int v) const {
    for (const Term& a : terms_[user])
      for (const Term& b : terms_[v])
        if (a.ref.node == b.ref.node) return true;
    return false;
  }

  void absorb(int user, int v) {
    std::vector<Term> renewed;
    for (const Term& t : terms_[user]) {
      if (t.ref.node != v) {
        renewed.push_back(t);
        continue;
      }
      for (const Term& inner : terms_[v]) renewed.push_back({t.coef * inner.coef, inner.ref.turned(t.ref.turn)});
    }
    terms_[user] = std::move(renewed);
  }

  const Graph& g_;
  std::vector<std::vector<Term>> terms_;
  std::vector<char> output_;
  std::vector<int> live_;
};

}  // namespace

std::vector<Ref> placed(const Graph& g, std::vector<Ref> outputs, Graph& target, std::span<const Ref> feed) {
  const auto input = [&](const std::vector<int>& cells) { return feed[cells[0]]; };
  const auto terms = [&](int i, const auto& renewed) { return renewed_terms(g[i].terms, renewed); };
  repeat(g, live_nodes(g, outputs), outputs, target, input, terms);
  return outputs;
}

Graph merge_constants(const Graph& g, std::vector<Ref>& outputs) {
  Merger merger(g, outputs);
  while (merger.round()) {
  }
  return merger.result(outputs);
}

namespace {

// Which nodes are held times i. A node is where every sum that adds it wants it turned, and where what it adds is a product
// or turned itself.
class Turns {
 public:
  Turns(const Graph& g, const std::vector<Ref>& outputs) : g_(g), live_(live_nodes(g, outputs)), turned_(g.size()), uses_(g.size()) {
    for (int i : live_) {
      for (const Term& t : g[i].terms) uses_[t.ref.node].push_back({i, t.ref.turn, !t.coef.unit()});
      for (const Point& p : g[i].points)
        if (p.ref) uses_[p.ref.node].push_back({-1, 0, false});
    }
    for (Ref r : outputs)
      if (r) uses_[r.node].push_back({-1, 0, false});
    for (auto i = live_.rbegin(); i != live_.rend(); ++i) turned_[*i] = g[*i].kind == Node::Kind::Sum && wanted(*i);
    for (bool changed = true; changed;) {
      changed = false;
      for (int i : live_) {
        if (!turned_[i] || (wanted(i) && possible(i))) continue;
        turned_[i] = 0;
        changed = true;
      }
    }
  }

  bool operator[](int node) const { return turned_[node]; }
  const std::vector<int>& live() const { return live_; }

 private:
  struct Use {
    int user;  // -1: not a sum
    int turn;
    bool product;
  };

  bool wanted(int node) const {
    bool any = false;
    for (const Use& u : uses_[node]) {
      if (u.user < 0) return false;
      if (u.product) continue;
      if (((u.turn + turned_[u.user]) & 1) == 0) return false;
      any = true;
    }
    return any;
  }

  bool possible(int node) const {
    const std::vector<Term>& terms = g_[node].terms;
    return std::all_of(terms.begin(), terms.end(), [&](const Term& t) { return !t.coef.unit() || turned_[t.ref.node]; });
  }

  const Graph& g_;
  const std::vector<int> live_;
  std::vector<char> turned_;
  std::vector<std::vector<Use>> uses_;
};

}  // namespace

Graph turn_products(const Graph& g, std::vector<Ref>& outputs) {
  const Turns turns(g, outputs);
  return rebuilt(g, turns.live(), outputs, [&](int i, const auto& renewed) {
    std::vector<Term> terms = g[i].terms;
    for (Term& t : terms) t.ref = renewed(t.ref.turned(turns[i] - turns[t.ref.node]));
    return terms;
  });
}

}  // namespace xfm
