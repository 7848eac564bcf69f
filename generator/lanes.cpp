#include "generator/lanes.h"

#include "generator/check.h"
#include "generator/passes.h"

namespace xfm {

std::vector<int> live_nodes(const Graph& graph, std::span<const Point> outputs) {
  std::vector<Ref> refs;
  for (const Point& p : outputs) refs.push_back(p.ref);
  return live_nodes(graph, refs);
}

Signed signed_sum(Program& program, std::vector<Signed> terms) {
  check(!terms.empty(), "a sum has terms");
  while (terms.size() > 1) {
    std::vector<Signed> sums;
    for (size_t i = 0; i + 1 < terms.size(); i += 2) {
      const Signed &x = terms[i], &y = terms[i + 1];
      const Type type = program.type(x.value);
      if (x.negative == y.negative) {
        sums.push_back({program.emit({.op = Op::Add, .type = type, .a = x.value, .b = y.value}), x.negative});
      } else {
        const Signed &plus = x.negative ? y : x, &minus = x.negative ? x : y;
        sums.push_back({program.emit({.op = Op::Sub, .type = type, .a = plus.value, .b = minus.value}), false});
      }
    }
    if (terms.size() % 2) sums.push_back(terms.back());
    terms = std::move(sums);
  }
  return terms[0];
}

namespace {

// Values of the components of a node, with the quarter turn of a reference applied.
struct Parts {
  Signed re, im;
};

Parts turned(Parts p, int turn) {
  const auto minus = [](Signed s) { return Signed{s.value, !s.negative}; };
  switch (turn) {
    case 1: return {minus(p.im), p.re};
    case 2: return {minus(p.re), minus(p.im)};
    case 3: return {p.im, minus(p.re)};
    default: return p;
  }
}

int positive(Program& program, Signed s) {
  if (!s.negative) return s.value;
  const Type type = program.type(s.value);
  const int zero = program.emit({.op = Op::Zero, .type = type});
  return program.emit({.op = Op::Sub, .type = type, .a = zero, .b = s.value});
}

int scaled(Program& program, int value) {
  const Type type = program.type(value);
  const int scale = program.emit({.op = Op::Scale, .type = type});
  return program.emit({.op = Op::Mul, .type = type, .a = value, .b = scale});
}

class ScalarLowering {
 public:
  explicit ScalarLowering(const Graph& g) : g_(g), parts_(g.size()) {}

  Program run(std::span<const Point> outputs) {
    for (int i : live_nodes(g_, outputs)) {
      if (g_[i].kind == Node::Kind::Input) {
        const int cell = 2 * g_[i].cells[0];
        parts_[i] = {{p_.emit({.op = Op::Load, .type = Type::F32, .cell = cell})},
                     {p_.emit({.op = Op::Load, .type = Type::F32, .cell = cell + 1})}};
      } else {
        parts_[i] = {component(g_[i], false), component(g_[i], true)};
      }
    }
    for (size_t k = 0; k < outputs.size(); ++k) {
      const Parts p = turned(parts_[outputs[k].ref.node], outputs[k].ref.turn);
      p_.store(StoreKind::Full, scaled(p_, positive(p_, p.re)), static_cast<int>(2 * k));
      p_.store(StoreKind::Full, scaled(p_, positive(p_, p.im)), static_cast<int>(2 * k + 1));
    }
    return std::move(p_);
  }

 private:
  Signed component(const Node& n, bool imaginary) {
    const bool products = n.has_products();
    std::vector<Signed> terms;
    for (const Term& t : n.terms) {
      const Parts parts = turned(parts_[t.ref.node], t.ref.turn);
      Signed v = imaginary ? parts.im : parts.re;
      if (products) v.value = p_.emit({.op = Op::Widen, .type = Type::F64, .a = v.value});
      if (!t.coef.unit()) {
        const int c = p_.constant(Type::F64, {t.coef.lane(0)});
        v.value = p_.emit({.op = Op::Mul, .type = Type::F64, .a = v.value, .b = c});
      }
      terms.push_back(v);
      if (products && terms.size() == 2) terms = {signed_sum(p_, terms)};  // from the left, as the expression reads
    }
    Signed sum = signed_sum(p_, terms);
    if (products) sum.value = p_.emit({.op = Op::Narrow, .type = Type::F32, .a = sum.value});
    return sum;
  }

  const Graph& g_;
  Program p_;
  std::vector<Parts> parts_;
};

// Four complex values of the data as two registers; single values read and written as 64-bit halves.
class SplitLowering {
 public:
  explicit SplitLowering(const Graph& g) : g_(g), parts_(g.size()) { check(g.lanes() == 4, "the split form has four lanes"); }

  Program run(std::span<const Point> outputs) {
    for (int i : live_nodes(g_, outputs)) {
      switch (g_[i].kind) {
        case Node::Kind::Input: parts_[i] = loaded(g_[i].cells); break;
        case Node::Kind::Sum: parts_[i] = {component(g_[i], false), component(g_[i], true)}; break;
        case Node::Kind::Regroup: parts_[i] = {regrouped(g_[i], false), regrouped(g_[i], true)}; break;
      }
    }
    store(outputs);
    return std::move(p_);
  }

 private:
  static constexpr Type kType = Type::F32x4;

  int pair_of_cells(int low, int high) {
    if (low >= 0 && high == low + 1) return p_.emit({.op = Op::Load, .type = kType, .cell = 2 * low});
    const int a = low >= 0 ? p_.emit({.op = Op::LoadPair, .type = kType, .cell = 2 * low}) : p_.emit({.op = Op::Zero, .type = kType});
    return high >= 0 ? p_.emit({.op = Op::LoadHigh, .type = kType, .a = a, .cell = 2 * high}) : a;
  }

  int shuffle(int a, int b, int imm) { return p_.emit({.op = Op::Shuffle, .type = kType, .a = a, .b = b, .imm = imm}); }

  Parts loaded(const std::vector<int>& cells) {
    const int low = pair_of_cells(cells[0], cells[1]), high = pair_of_cells(cells[2], cells[3]);
    return {{shuffle(low, high, 0x88)}, {shuffle(low, high, 0xDD)}};
  }

  Signed component(const Node& n, bool imaginary) {
    std::vector<Signed> terms;
    for (const Term& t : n.terms) {
      const Parts parts = turned(parts_[t.ref.node], t.ref.turn);
      Signed v = imaginary ? parts.im : parts.re;
      if (!t.coef.unit()) {
        std::vector<Real> lanes;
        for (int l = 0; l < 4; ++l) lanes.push_back(v.negative && !t.coef.uniform() ? -t.coef.lane(l) : t.coef.lane(l));
        if (!t.coef.uniform()) v.negative = false;
        v.value = p_.emit({.op = Op::Mul, .type = kType, .a = v.value, .b = p_.constant(kType, lanes)});
      }
      terms.push_back(v);
    }
    return signed_sum(p_, terms);
  }

  // Lanes of up to four registers: two from the first two, two from the others, then both together. The first step
  // takes neighbours of the wanted lanes along, so that the vectors of one tile share it.
  Signed regrouped(const Node& n, bool imaginary) {
    struct Lane {
      int value = -1, lane = 0;
    };
    Lane lanes[4];
    for (int l = 0; l < 4; ++l) {
      const Point& p = n.points[l];
      if (!p.ref && p.lane != kAnyLane) lanes[l].value = p_.emit({.op = Op::Zero, .type = kType});
      if (!p.ref) continue;
      const Parts parts = turned(parts_[p.ref.node], p.ref.turn);
      const Signed s = imaginary ? parts.im : parts.re;
      lanes[l] = {positive(p_, s), p.lane};
    }
    const auto both = [&](Lane& x, Lane& y) {  // one register that holds x and y, which then say where
      if (x.value < 0) x = y;
      if (y.value < 0) y = x;
      if (x.value < 0 || x.value == y.value) return;
      const int bx = x.lane & 2, by = y.lane & 2;
      const int v = shuffle(x.value, y.value, bx | (bx + 1) << 2 | by << 4 | (by + 1) << 6);
      x = {v, x.lane & 1};
      y = {v, 2 + (y.lane & 1)};
    };
    both(lanes[0], lanes[1]);
    both(lanes[2], lanes[3]);
    if (lanes[0].value < 0) lanes[0] = lanes[1] = lanes[2];
    if (lanes[2].value < 0) lanes[2] = lanes[3] = lanes[0];
    const int imm = lanes[0].lane | lanes[1].lane << 2 | lanes[2].lane << 4 | lanes[3].lane << 6;
    return {shuffle(lanes[0].value, lanes[2].value, imm), false};
  }

  void store(std::span<const Point> outputs) {
    std::map<std::pair<int, int>, std::vector<int>> held;  // by value: the outputs on its lanes
    for (size_t k = 0; k < outputs.size(); ++k) {
      std::vector<int>& lanes = held[{outputs[k].ref.node, outputs[k].ref.turn}];
      lanes.resize(4, -1);
      lanes[outputs[k].lane] = static_cast<int>(k);
    }
    for (const auto& [ref, lanes] : held) {
      const Parts parts = turned(parts_[ref.first], ref.second);
      const int re = scaled(p_, positive(p_, parts.re)), im = scaled(p_, positive(p_, parts.im));
      for (int half = 0; half < 2; ++half) {
        const int low = lanes[2 * half], high = lanes[2 * half + 1];
        if (low < 0 && high < 0) continue;
        const Op op = half ? Op::UnpackHigh : Op::UnpackLow;
        const int v = p_.emit({.op = op, .type = kType, .a = re, .b = im});
        if (low >= 0 && high == low + 1) {
          p_.store(StoreKind::Full, v, 2 * low);
        } else {
          if (low >= 0) p_.store(StoreKind::Low, v, 2 * low);
          if (high >= 0) p_.store(StoreKind::High, v, 2 * high);
        }
      }
    }
  }

  const Graph& g_;
  Program p_;
  std::vector<Parts> parts_;
};

}  // namespace

Program lower_scalar(const Graph& graph, std::span<const Point> outputs) { return ScalarLowering(graph).run(outputs); }
Program lower_split(const Graph& graph, std::span<const Point> outputs) { return SplitLowering(graph).run(outputs); }

}  // namespace xfm
