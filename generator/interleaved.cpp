// The interleaved working forms: complex values side by side in a register, components as in memory.
//
// A quarter turn is an exchange of components and a sign. Products take it at the cost of the exchange (the sign is in the
// constant); a sum a + i*b takes it as one alternating addition; other sums need the turned value itself. So each node is
// held in the orientation, as it is or turned, that leaves the fewest of them.
#include <algorithm>
#include <map>

#include "generator/butterflies.h"
#include "generator/check.h"
#include "generator/lanes.h"
#include "generator/passes.h"

namespace xfm {

namespace {

// Picks for every node whether it is held times i.
class Orientation {
 public:
  Orientation(const Graph& g, const std::vector<int>& live, std::span<const Point> outputs)
      : g_(g), live_(live), odd_(g.size()), uses_(g.size()), fixed_(g.size()) {
    for (int i : live)
      for (const Term& t : g[i].terms) uses_[t.ref.node].push_back({i, t.ref.turn & 1, !t.coef.unit()});
    for (int i : live) fixed_[i] = g[i].kind != Node::Kind::Sum;
    for (int i : live)
      for (const Point& p : g[i].points)
        if (p.ref) pin(p.ref);
    for (const Point& p : outputs) pin(p.ref);
    start();
    improve();
  }

  const std::vector<char>& odd() const { return odd_; }

 private:
  struct Use {
    int user;
    int turn;  // odd or even
    bool product;
  };

  void pin(Ref r) {
    if (!fixed_[r.node]) odd_[r.node] = static_cast<char>(r.turn & 1);
    fixed_[r.node] = 1;
  }

  // From the outputs back: a node whose sums all want it turned is held turned.
  void start() {
    for (auto i = live_.rbegin(); i != live_.rend(); ++i) {
      if (fixed_[*i]) continue;
      int sums = 0, turned = 0;
      for (const Use& u : uses_[*i])
        if (!u.product) ++sums, turned += u.turn ^ odd_[u.user];
      odd_[*i] = sums > 0 && turned == sums;
    }
  }

  // Exchanges and turned values that the uses of a node ask for.
  int cost(int node) const {
    bool exchanged = false, turned = false;
    for (const Use& u : uses_[node]) {
      if (!((u.turn ^ odd_[u.user] ^ odd_[node]) & 1)) continue;
      exchanged = true;
      turned = turned || !u.product;
    }
    return 2 * exchanged + 3 * turned;
  }

  int cost_around(int node) const {
    int sum = cost(node);
    for (const Term& t : g_[node].terms) sum += cost(t.ref.node);
    return sum;
  }

  void improve() {
    for (int round = 0; round < 4; ++round)
      for (int i : live_) {
        if (fixed_[i]) continue;
        const int before = cost_around(i);
        odd_[i] ^= 1;
        if (cost_around(i) >= before) odd_[i] ^= 1;
      }
  }

  const Graph& g_;
  const std::vector<int>& live_;
  std::vector<char> odd_;
  std::vector<std::vector<Use>> uses_;
  std::vector<char> fixed_;
};

class InterleavedLowering {
 public:
  InterleavedLowering(const Graph& g, Type type) : g_(g), type_(type), held_(g.size()) {
    check(2 * g.lanes() == width(type), "complex values fill the register");
  }

  Program run(std::span<const Point> outputs) {
    const std::vector<int> live = live_nodes(g_, outputs);
    const Orientation orientation(g_, live, outputs);
    LoadedButterflies butterflies{{}, std::vector<char>(g_.size())};
    if (type_ == Type::F32x4) butterflies = find_loaded_butterflies(g_, live, outputs);
    for (int i : live) {
      if (butterflies.spared[i]) continue;
      if (const auto b = butterflies.by_node.find(i); b != butterflies.by_node.end()) {
        held_[i] = butterfly(b->second);
        continue;
      }
      switch (g_[i].kind) {
        case Node::Kind::Input: held_[i] = {loaded(g_[i].cells), 0}; break;
        case Node::Kind::Sum: held_[i] = sum(g_[i], orientation.odd()[i]); break;
        case Node::Kind::Regroup: held_[i] = {regrouped(g_[i].points), 0}; break;
      }
    }
    store(outputs);
    return std::move(p_);
  }

 private:
  // The register holds i^turn times the node.
  struct Held {
    int value = -1;
    int turn = 0;
  };

  int emit(Op op, int a, int b = -1, int imm = 0) { return p_.emit({.op = op, .type = type_, .a = a, .b = b, .imm = imm}); }
  int zero() { return emit(Op::Zero, -1); }
  int exchanged(int v) { return emit(Op::Permute, v, -1, single_precision(type_) ? 0xB1 : type_ == Type::F64x4 ? 5 : 1); }
  int times_i(int v) {
    if (width(type_) > 4 || type_ == Type::F64x4) return emit(Op::AddSub, zero(), exchanged(v));
    std::vector<Real> signs;
    for (int l = 0; l < g_.lanes(); ++l) signs.insert(signs.end(), {-1, 1});
    return emit(Op::Mul, exchanged(v), p_.constant(type_, signs));
  }

  // Signs alternate within each complex value where the product also turns it: (-c, c).
  int constant(const Coef& c, bool turning, bool negative) {
    std::vector<Real> lanes;
    for (int l = 0; l < g_.lanes(); ++l) {
      const Real x = negative ? -c.lane(l) : c.lane(l);
      lanes.push_back(turning ? -x : x);
      lanes.push_back(x);
    }
    return p_.constant(type_, lanes);
  }

  Held sum(const Node& n, int held_turn) {
    std::vector<Signed> plain;
    std::vector<Held> turned;  // times +i or -i, still to be turned
    for (const Term& t : n.terms) {
      const Held& h = held_[t.ref.node];
      const int turn = (held_turn + t.ref.turn - h.turn) & 3;
      if (t.coef.unit() && turn % 2 == 1) {
        turned.push_back({h.value, turn});
      } else if (t.coef.unit()) {
        plain.push_back({h.value, turn == 2});
      } else {
        plain.push_back(product(t.coef, h.value, turn));
      }
    }
    for (const Held& t : turned) {
      // a + i*b in one operation where there is an a with the same sign.
      const bool negative = t.turn == 3;
      const auto a = std::find_if(plain.begin(), plain.end(), [&](const Signed& s) { return s.negative == negative; });
      if (a != plain.end()) {
        a->value = emit(Op::AddSub, a->value, exchanged(t.value));
      } else {
        plain.push_back({times_i(t.value), negative});
      }
    }
    const Signed s = signed_sum(p_, plain);
    return {s.value, s.negative ? (held_turn + 2) & 3 : held_turn};
  }

  Signed product(const Coef& c, int value, int turn) {
    const bool turning = turn % 2 == 1;
    const bool negative = turn >= 2;
    const bool folded = turning || !c.uniform();  // a constant of signs of its own anyway
    const int k = constant(c, turning, folded && negative);
    return {emit(Op::Mul, turning ? exchanged(value) : value, k), !folded && negative};
  }

  int load(Type type, int cell) { return p_.emit({.op = Op::Load, .type = type, .cell = 2 * cell}); }

  int loaded(const std::vector<int>& cells) {
    const auto run = [&](size_t first, size_t count) {
      for (size_t i = 0; i < count; ++i)
        if (cells[first + i] < 0 || cells[first + i] != cells[first] + static_cast<int>(i)) return false;
      return true;
    };
    if (run(0, cells.size())) return load(type_, cells[0]);
    if (type_ == Type::F32x4) {
      const int low = cells[0] < 0 ? zero() : p_.emit({.op = Op::LoadPair, .type = type_, .cell = 2 * cells[0]});
      return cells[1] < 0 ? low : p_.emit({.op = Op::LoadHigh, .type = type_, .a = low, .cell = 2 * cells[1]});
    }
    check(type_ == Type::F64x4, "a scattered load is of two complex numbers");
    const auto half = [&](int c) { return c < 0 ? p_.emit({.op = Op::Zero, .type = Type::F64x2}) : load(Type::F64x2, c); };
    const int low = half(cells[0]);
    return p_.emit({.op = Op::Join, .type = type_, .a = low, .b = half(cells[1])});
  }

  Held butterfly(const LoadedButterfly& b) {
    std::vector<Signed> sums;
    for (const LoadedPair& pair : b) sums.push_back(loaded_sum(pair));
    const Signed s = signed_sum(p_, sums);
    return {s.value, s.negative ? 2 : 0};
  }

  // Signs are put on the components before those of the turned lanes are exchanged. Of a sum and its negative, one is made.
  Signed loaded_sum(const LoadedPair& pair) {
    const int flip = pair[0].turn[0] & 2;
    std::vector<Signed> terms;
    for (const LoadedPoint& point : pair) {
      const int value = p_.emit({.op = Op::LoadDup, .type = type_, .cell = 2 * point.cell});
      std::vector<Real> signs;
      for (int turn : point.turn) {
        const int t = (turn + flip) & 3;
        signs.push_back(t == 2 || t == 3 ? -1 : 1);
        signs.push_back(t == 2 || t == 1 ? -1 : 1);
      }
      const auto negatives = std::count(signs.begin(), signs.end(), Real(-1));
      const bool mixed = negatives != 0 && negatives != 4;
      terms.push_back({mixed ? emit(Op::Mul, value, p_.constant(type_, signs)) : value, negatives == 4});
    }
    Signed sum = signed_sum(p_, terms);
    const bool low = pair[0].turn[0] & 1, high = pair[0].turn[1] & 1;
    if (low || high) sum.value = emit(Op::Permute, sum.value, -1, (low ? 0x1 : 0x4) | (high ? 0xB0 : 0xE0));
    return {sum.value, sum.negative != (flip != 0)};
  }

  int upright(Ref r) {
    const Held& h = held_[r.node];
    const int turn = (r.turn - h.turn) & 3;
    int v = turn % 2 ? times_i(h.value) : h.value;
    if (turn >= 2) v = emit(Op::Sub, zero(), v);
    return v;
  }

  int regrouped(const std::vector<Point>& points) {
    std::vector<int> value, lane;
    for (const Point& p : points) {
      value.push_back(p.ref ? upright(p.ref) : p.lane == kAnyLane ? -1 : zero());
      lane.push_back(p.ref ? p.lane : 0);
    }
    if (points.size() == 2) return two_lanes(value, lane);
    check(points.size() == 4, "a register holds two or four complex values");
    for (int l = 0; l < 4; ++l)
      if (value[l] < 0) value[l] = value[l ^ 1] >= 0 ? value[l ^ 1] : value[l ^ 2], lane[l] = lane[l ^ 1];
    return four_lanes(value, lane);
  }

  int two_lanes(std::vector<int> value, std::vector<int> lane) {
    for (int l : {0, 1})
      if (value[l] < 0) value[l] = value[1 - l], lane[l] = lane[1 - l];
    if (type_ == Type::F64x4) return emit(Op::Halves, value[0], value[1], lane[0] | (2 + lane[1]) << 4);
    const int imm = (lane[0] ? 0xE : 0x4) | (lane[1] ? 0xE0 : 0x40);
    return emit(Op::Shuffle, value[0], value[1], imm);
  }

  // Pairs of 64 bits: a shuffle within the 128-bit halves of two registers, shared by the vectors of a tile, then the
  // halves put together.
  int four_lanes(const std::vector<int>& value, const std::vector<int>& lane) {
    const auto pair = [&](int l) {
      const int imm = (lane[l] & 1) | (lane[l + 1] & 1) << 1;
      check((lane[l] & 2) == (lane[l + 1] & 2), "neighbours come from the same half");
      return emit(Op::PairShuffle, value[l], value[l + 1], imm | imm << 2);
    };
    const int low = pair(0), high = pair(2);
    return emit(Op::Halves, low, high, (lane[0] >> 1) | (2 + (lane[2] >> 1)) << 4);
  }

  void store(std::span<const Point> outputs) {
    std::map<std::pair<int, int>, std::vector<int>> held;
    for (size_t k = 0; k < outputs.size(); ++k) {
      std::vector<int>& lanes = held[{outputs[k].ref.node, outputs[k].ref.turn}];
      lanes.resize(g_.lanes(), -1);
      lanes[outputs[k].lane] = static_cast<int>(k);
    }
    for (const auto& [ref, lanes] : held) {
      const int v = emit(Op::Mul, upright({ref.first, ref.second}), emit(Op::Scale, -1));
      bool whole = lanes[0] >= 0;
      for (size_t l = 0; l < lanes.size(); ++l) whole = whole && lanes[l] == lanes[0] + static_cast<int>(l);
      if (whole) {
        p_.store(StoreKind::Full, v, 2 * lanes[0]);
      } else {
        store_lanes(v, lanes);
      }
    }
  }

  void store_lanes(int v, const std::vector<int>& lanes) {
    for (int l = 0; l < 2; ++l) {
      if (lanes[l] < 0) continue;
      if (type_ == Type::F32x4) {
        p_.store(l ? StoreKind::High : StoreKind::Low, v, 2 * lanes[l]);
      } else {
        check(type_ == Type::F64x4, "a scattered store is of two complex numbers");
        const int half = p_.emit({.op = l ? Op::HighHalf : Op::LowHalf, .type = Type::F64x2, .a = v});
        p_.store(StoreKind::Full, half, 2 * lanes[l]);
      }
    }
  }

  const Graph& g_;
  const Type type_;
  Program p_;
  std::vector<Held> held_;
};

}  // namespace

Program lower_interleaved(const Graph& graph, std::span<const Point> outputs, Type type) {
  return InterleavedLowering(graph, type).run(outputs);
}

}  // namespace xfm
