// The interleaved working forms: complex values side by side in a register, components as in memory.
//
// A quarter turn is an exchange of components and a sign. Products take it at the cost of the exchange (the sign is in the
// constant); a sum a + i*b takes it as one alternating addition; other sums need the turned value itself.
#include <algorithm>
#include <map>

#include "generator/butterflies.h"
#include "generator/check.h"
#include "generator/lanes.h"
#include "generator/passes.h"
#include "generator/sums.h"

namespace xfm {

namespace {

class InterleavedLowering {
 public:
  InterleavedLowering(const Graph& g, Type type) : g_(g), type_(type), value_(g.size(), -1) {
    check(2 * g.lanes() == width(type), "complex values fill the register");
  }

  Program run(std::span<const Point> outputs) {
    const std::vector<int> live = live_nodes(g_, refs_of(outputs));
    LoadedButterflies butterflies{{}, std::vector<char>(g_.size())};
    if (type_ == Type::F32x4) butterflies = find_loaded_butterflies(g_, live, outputs);
    for (int i : live) {
      if (butterflies.spared[i]) continue;
      if (const auto b = butterflies.by_node.find(i); b != butterflies.by_node.end()) {
        value_[i] = butterfly(b->second);
        continue;
      }
      switch (g_[i].kind) {
        case Node::Kind::Input: value_[i] = loaded(g_[i].cells); break;
        case Node::Kind::Sum: value_[i] = sum(g_[i]); break;
        case Node::Kind::Regroup: value_[i] = regrouped(g_[i].points); break;
      }
    }
    store(outputs);
    return std::move(p_);
  }

 private:
  // A sum in the making: i^turn times a register.
  struct Summand {
    int value;
    int turn;
  };

  int emit(Op op, int a, int b = -1, int imm = 0) { return p_.emit({.op = op, .type = type_, .a = a, .b = b, .imm = imm}); }
  int zero() { return emit(Op::Zero, -1); }
  int exchanged(int v) { return emit(Op::Permute, v, -1, single_precision(type_) ? 0xB1 : type_ == Type::F64x4 ? 5 : 1); }
  int times_i(int v) {
    std::vector<bool> negative;
    for (int l = 0; l < g_.lanes(); ++l) negative.insert(negative.end(), {true, false});
    return p_.flip(type_, exchanged(v), negative);
  }

  // Signs alternate within each complex value where the product also turns it: (-c, c). By 1 and -1 only signs change.
  int times(const Coef& c, int value, bool turning, bool negative) {
    std::vector<Real> lanes;
    for (int l = 0; l < g_.lanes(); ++l) {
      const Real x = negative ? -c.lane(l) : c.lane(l);
      lanes.push_back(turning ? -x : x);
      lanes.push_back(x);
    }
    if (!std::ranges::all_of(lanes, is_unit)) return emit(Op::Mul, value, p_.constant(type_, lanes));
    std::vector<bool> negatives;
    for (const Real x : lanes) negatives.push_back(x < 0);
    return p_.flip(type_, value, negatives);
  }

  int sum(const Node& n) {
    std::vector<Summand> terms;
    for (const Term& t : n.terms) {
      const int value = value_[t.ref.node];
      terms.push_back(t.coef.unit() ? Summand{value, t.ref.turn} : product(t.coef, value, t.ref.turn));
    }
    const Summand all = summed(std::move(terms), [&](const Summand& a, const Summand& b) { return added(a, b); });
    check(all.turn == 0, "a stored sum has its turns inside");
    return all.value;
  }

  // Turns by the constant, which has signs of its own anyway where it turns or differs from lane to lane.
  Summand product(const Coef& c, int value, int turn) {
    const bool turning = turn % 2 == 1, negative = turn >= 2, folded = turning || !c.uniform();
    return {times(c, turning ? exchanged(value) : value, turning, folded && negative), negative && !folded ? 2 : 0};
  }

  Summand added(Summand a, Summand b) {
    if (a.turn == 2 && b.turn == 2) return {emit(Op::Add, a.value, b.value), 2};
    if (a.turn == 0 && b.turn == 1) return {emit(Op::AddSub, a.value, exchanged(b.value)), 0};
    if (a.turn == 1 && b.turn == 0) return {emit(Op::AddSub, b.value, exchanged(a.value)), 0};
    for (Summand* s : {&a, &b})
      if (s->turn % 2) *s = {times_i(s->value), s->turn - 1};
    if (a.turn == 0) return {emit(b.turn == 0 ? Op::Add : Op::Sub, a.value, b.value), 0};
    if (b.turn == 0) return {emit(Op::Sub, b.value, a.value), 0};
    return {emit(Op::Sub, negated(p_, a.value), b.value), 0};
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

  int butterfly(const LoadedButterfly& b) {
    std::vector<int> sums;
    std::vector<bool> negative;
    for (const LoadedSum& s : b) {
      negative.push_back(b.size() == 2 && s.turn[0] >= 2 && (negative.empty() || !negative[0]));
      const int opposite = negative.back() ? 2 : 0;
      sums.push_back(turned_lanes(signed_sum(s), {(s.turn[0] + opposite) & 3, (s.turn[1] + opposite) & 3}));
    }
    if (sums.size() == 1) return sums[0];
    if (negative[0]) return emit(Op::Sub, sums[1], sums[0]);
    return emit(negative[1] ? Op::Sub : Op::Add, sums[0], sums[1]);
  }

  int signed_sum(const LoadedSum& sum) {
    int value[2];
    bool negative[2];
    for (int k : {0, 1}) {
      const LoadedPoint& point = sum.points[k];
      value[k] = p_.emit({.op = Op::LoadDup, .type = type_, .cell = 2 * point.cell});
      negative[k] = point.subtracted[0] && point.subtracted[1];
      if (point.subtracted[0] != point.subtracted[1])
        value[k] = p_.flip(type_, value[k], {point.subtracted[0], point.subtracted[0], point.subtracted[1], point.subtracted[1]});
    }
    if (negative[0]) return emit(Op::Sub, value[1], value[0]);
    return emit(negative[1] ? Op::Sub : Op::Add, value[0], value[1]);
  }

  // Both complex values of a register turned, each by its own quarters.
  int turned_lanes(int value, const int (&turn)[2]) {
    const bool low = turn[0] % 2, high = turn[1] % 2;
    if (low || high) value = emit(Op::Permute, value, -1, (low ? 0x1 : 0x4) | (high ? 0xB0 : 0xE0));
    if (turn[0] == 0 && turn[1] == 0) return value;
    const auto negative_re = [](int t) { return t == 1 || t == 2; };
    return p_.flip(type_, value, {negative_re(turn[0]), turn[0] >= 2, negative_re(turn[1]), turn[1] >= 2});
  }

  int upright(Ref r) {
    const int v = r.turn % 2 ? times_i(value_[r.node]) : value_[r.node];
    return r.turn >= 2 ? negated(p_, v) : v;
  }

  int regrouped(const std::vector<Point>& points) {
    std::vector<int> value, lane;
    bool in_place = true;
    for (size_t l = 0; l < points.size(); ++l) {
      const Point& p = points[l];
      check(p.ref || p.lane == kAnyLane, "a lane holds a value, or anything");
      value.push_back(p.ref ? upright(p.ref) : -1);
      lane.push_back(p.ref ? p.lane : 0);
      in_place = in_place && (!p.ref || p.lane == static_cast<int>(l));
    }
    if (in_place) return blended(p_, value, 2);
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
  std::vector<int> value_;  // by node
};

}  // namespace

Program lower_interleaved(const Graph& graph, std::span<const Point> outputs, Type type) {
  return pruned(InterleavedLowering(graph, type).run(outputs));
}

}  // namespace xfm
