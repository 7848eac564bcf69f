// The expression graph: hash-consed nodes, each one linear combination of held values.
//
// A reference is i^turn times a node, so a value, its negative and its rotations by quarter turns are one node; real
// flows use the turns 0 (plus) and 2 (minus) only. A node whose coefficients are all 1 is a chain of sums; any other is a
// sum of products (in the single-precision real kernels that boundary is where a value is narrowed). Equal nodes are
// one node; nothing is reassociated. What the sum of a node is, to the last bit, is told in sums.h.
//
// A graph has a number of lanes. With one lane a node is one value. With more, a node is a vector of values that go
// through the same operations with coefficients of their own, and `regroup` makes a vector out of lanes of others.
#pragma once

#include <map>
#include <span>
#include <utility>
#include <vector>

#include "generator/label.h"
#include "generator/number.h"

namespace xfm {

struct Ref {
  int node = -1;  // -1: the value zero
  int turn = 0;   // times i^turn

  explicit operator bool() const { return node >= 0; }
  Ref turned(int quarters) const { return {node, (turn + quarters) & 3}; }
  Ref operator-() const { return turned(2); }
  friend bool operator==(const Ref&, const Ref&) = default;
};

// A constant for every lane, or one constant for all of them.
class Coef {
 public:
  Coef(Real uniform) : lanes_{uniform} {}  // NOLINT: a number is a uniform coefficient
  Coef(double uniform) : lanes_{Real(uniform)} {}
  Coef(int uniform) : lanes_{Real(uniform)} {}
  explicit Coef(std::vector<Real> lanes);

  bool uniform() const { return lanes_.size() == 1; }
  Real lane(int i) const { return lanes_[uniform() ? 0 : i]; }
  bool unit() const { return uniform() && is_unit(lanes_[0]); }
  bool unit_somewhere() const;
  bool zero() const { return uniform() && is_zero(lanes_[0]); }
  // The lane that decides the sign of the whole, for a normal form up to sign.
  bool negative() const;
  // A key: coefficients that differ by less than 2^-80 are one.
  std::vector<__int128> digits() const;
  Coef operator-() const;
  friend Coef operator*(const Coef& a, const Coef& b);
  friend Coef operator+(const Coef& a, const Coef& b);

 private:
  std::vector<Real> lanes_;
};

struct Term {
  Coef coef;
  Ref ref;
};

// One lane of a vector value. Without a reference it is zero, or nothing that matters where the lane is kAnyLane.
inline constexpr int kAnyLane = -1;
struct Point {
  Ref ref;
  int lane = 0;
};

// The values that points are lanes of.
std::vector<Ref> refs_of(std::span<const Point> points);

struct Node {
  enum class Kind { Input, Sum, Regroup };
  Kind kind;
  std::vector<int> cells = {};     // Input: element of the source for every lane, -1 where the lane is empty
  std::vector<Term> terms = {};    // Sum: coefficients normalised so that none is negative
  std::vector<Point> points = {};  // Regroup: where every lane comes from
  Label label = {};       // empty for an input

  bool has_products() const;
};

class Graph {
 public:
  explicit Graph(int lanes = 1) : lanes_(lanes) {}

  int lanes() const { return lanes_; }
  int size() const { return static_cast<int>(nodes_.size()); }
  const Node& operator[](int node) const { return nodes_[node]; }

  Ref input(int cell) { return input(std::vector<int>{cell}); }
  Ref input(std::vector<int> cells);
  // The combination of the terms, stored as it stands, but for signs: of a sum whose terms are all subtracted the sign stays
  // in the reference, and one that was made before with the other signs is that node.
  Ref lin(std::span<const Term> terms);
  Ref lin(std::initializer_list<Term> terms) { return lin(std::span(terms.begin(), terms.size())); }
  Ref add(Ref a, Ref b) { return lin({{1, a}, {1, b}}); }
  Ref sub(Ref a, Ref b) { return lin({{1, a}, {1, -b}}); }
  Ref scale(const Coef& c, Ref a) { return lin({{c, a}}); }
  Ref sum(std::span<const Ref> refs);
  // The vector with the given lanes; a whole vector in its own order is itself.
  Ref regroup(const std::vector<Point>& points);

  // An iteration of a loop of the flow: sums made while it stands carry it in their labels.
  struct Loop : xfm::Loop {
    Loop(Graph& graph, std::string name, int iteration = 0) : xfm::Loop(graph.loops_, std::move(name), iteration) {}
    Loop(Graph& graph, const Label& label) : xfm::Loop(graph.loops_, label) {}
  };
  // Numbers the parts of an iteration that have loops of their own.
  int next_in_loop() { return loops_.next(); }

 private:
  using Key = std::vector<std::pair<__int128, __int128>>;
  Ref find_or_make(Key key, Node node);

  int lanes_;
  std::vector<Node> nodes_;
  std::map<Key, Ref> known_;
  LoopNest loops_;
};

}  // namespace xfm
