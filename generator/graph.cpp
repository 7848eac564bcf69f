#include "generator/graph.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm {

Coef::Coef(std::vector<Real> lanes) : lanes_(std::move(lanes)) {
  const bool same = std::all_of(lanes_.begin(), lanes_.end(), [&](Real x) { return is_zero(x - lanes_[0]); });
  if (same) lanes_.resize(1);
}

bool Coef::negative() const {
  for (Real x : lanes_)
    if (!is_zero(x)) return x < 0;
  return false;
}

bool Coef::unit_somewhere() const { return std::any_of(lanes_.begin(), lanes_.end(), is_unit); }

std::vector<__int128> Coef::digits() const {
  std::vector<__int128> key;
  for (Real x : lanes_) {
    const Real scaled = x * Real(1ull << 40) * Real(1ull << 40);
    key.push_back(static_cast<__int128>(scaled + (scaled < 0 ? Real(-0.5) : Real(0.5))));
  }
  return key;
}

Coef Coef::operator-() const {
  Coef c = *this;
  for (Real& x : c.lanes_) x = -x;
  return c;
}

Coef operator*(const Coef& a, const Coef& b) {
  std::vector<Real> lanes(std::max(a.lanes_.size(), b.lanes_.size()));
  for (size_t i = 0; i < lanes.size(); ++i) lanes[i] = a.lane(i) * b.lane(i);
  return Coef(std::move(lanes));
}

Coef operator+(const Coef& a, const Coef& b) {
  std::vector<Real> lanes(std::max(a.lanes_.size(), b.lanes_.size()));
  for (size_t i = 0; i < lanes.size(); ++i) lanes[i] = a.lane(i) + b.lane(i);
  return Coef(std::move(lanes));
}

std::vector<Ref> refs_of(std::span<const Point> points) {
  std::vector<Ref> refs;
  for (const Point& p : points) refs.push_back(p.ref);
  return refs;
}

bool Node::has_products() const {
  return std::any_of(terms.begin(), terms.end(), [](const Term& t) { return !t.coef.unit(); });
}

Ref Graph::find_or_make(Key key, Node node) {
  if (const auto found = known_.find(key); found != known_.end()) return found->second;
  const Ref made{size(), 0};
  if (node.kind == Node::Kind::Sum) node.label = loops_.label();
  nodes_.push_back(std::move(node));
  known_.emplace(std::move(key), made);
  return made;
}

Ref Graph::input(std::vector<int> cells) {
  check(static_cast<int>(cells.size()) == lanes_, "an input has one cell for each lane");
  if (std::all_of(cells.begin(), cells.end(), [](int c) { return c < 0; })) return {};
  Key key{{-1, 0}};
  for (int c : cells) key.emplace_back(c, 0);
  return find_or_make(std::move(key), {.kind = Node::Kind::Input, .cells = std::move(cells)});
}

Ref Graph::sum(std::span<const Ref> refs) {
  std::vector<Term> terms;
  for (Ref r : refs) terms.push_back({1, r});
  return lin(terms);
}

namespace {

// Drops zeros, moves the signs of coefficients into the references and adds up terms in the same value.
std::vector<Term> collected(std::span<const Term> terms) {
  std::vector<Term> out;
  for (const Term& t : terms) {
    if (!t.ref || t.coef.zero()) continue;
    const auto same = std::find_if(out.begin(), out.end(), [&](const Term& o) {
      return o.ref.node == t.ref.node && ((o.ref.turn ^ t.ref.turn) & 1) == 0;
    });
    if (same == out.end()) {
      out.push_back(t);
    } else {
      same->coef = same->coef + (same->ref.turn == t.ref.turn ? t.coef : -t.coef);
    }
  }
  std::erase_if(out, [](const Term& t) { return t.coef.zero(); });
  for (Term& t : out)
    if (t.coef.negative()) t = {-t.coef, -t.ref};
  return out;
}

}  // namespace

Ref Graph::lin(std::span<const Term> given) {
  loops_.next();
  std::vector<Term> terms = collected(given);
  if (terms.empty()) return {};
  if (terms.size() == 1 && terms[0].coef.unit()) return terms[0].ref;
  const int first = terms[0].ref.turn;
  const bool alike = std::all_of(terms.begin(), terms.end(), [&](const Term& t) { return t.ref.turn == first; });
  const int outer = alike && first == 2 ? first : 0;
  for (Term& t : terms) t.ref = t.ref.turned(-outer);

  const auto key_of = [&](int turn) {
    std::vector<Key> parts;
    for (const Term& t : terms) {
      Key part{{t.ref.node, t.ref.turned(turn).turn}};
      for (__int128 d : t.coef.digits()) part.emplace_back(d, 0);
      parts.push_back(std::move(part));
    }
    std::sort(parts.begin(), parts.end());
    Key key{{-2, 0}};
    for (const Key& part : parts) {
      key.emplace_back(-4, part.size());
      key.insert(key.end(), part.begin(), part.end());
    }
    return key;
  };
  for (int turn = 1; turn < 4; ++turn)
    if (const auto found = known_.find(key_of(turn)); found != known_.end()) return found->second.turned(outer - turn);
  Key key = key_of(0);
  return find_or_make(std::move(key), {.kind = Node::Kind::Sum, .terms = std::move(terms)}).turned(outer);
}

Ref Graph::regroup(const std::vector<Point>& points) {
  check(static_cast<int>(points.size()) == lanes_, "a vector has one point for each lane");
  bool own = true, none = true;
  for (int l = 0; l < lanes_; ++l) {
    const Point& p = points[l];
    own = own && (p.lane == kAnyLane || (p.ref == points[0].ref && p.lane == l));
    none = none && !p.ref;
  }
  if (none) return {};
  if (own && points[0].ref) return points[0].ref;
  Key key{{-3, 0}};
  for (const Point& p : points) {
    key.emplace_back(p.ref.node, p.ref.turn);
    key.emplace_back(p.lane, 0);
  }
  return find_or_make(std::move(key), {.kind = Node::Kind::Regroup, .points = points});
}

}  // namespace xfm
