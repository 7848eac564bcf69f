#include "generator/lanes.h"

#include <algorithm>

#include "generator/check.h"
#include "generator/passes.h"
#include "generator/sums.h"

namespace xfm {

int negated(Program& program, int value) {
  const Inst inst = program.insts()[value];
  const bool product = inst.op == Op::Mul && program.insts()[inst.b].op == Op::Constant;
  if (!product && width(inst.type) > 1) return program.flip(inst.type, value, std::vector<bool>(width(inst.type), true));
  std::vector<Real> lanes = product ? program.lanes(program.insts()[inst.b]) : std::vector<Real>(1, 1);
  for (Real& x : lanes) x = -x;
  const int minus = program.constant(inst.type, std::move(lanes));
  return program.emit({.op = Op::Mul, .type = inst.type, .a = product ? inst.a : value, .b = minus});
}

Program pruned(const Program& program) {
  const std::vector<Inst>& insts = program.insts();
  std::vector<char> used(insts.size());
  for (const Store& s : program.stores()) used[s.value] = 1;
  for (size_t i = insts.size(); i-- > 0;)
    for (const int operand : {insts[i].a, insts[i].b, insts[i].c})
      if (used[i] && operand >= 0) used[operand] = 1;
  Program out;
  std::vector<int> place(insts.size(), -1);
  for (size_t i = 0; i < insts.size(); ++i) {
    if (!used[i]) continue;
    Inst inst = insts[i];
    for (int* operand : {&inst.a, &inst.b, &inst.c})
      if (*operand >= 0) *operand = place[*operand];
    place[i] = inst.op == Op::Constant ? out.constant(inst.type, program.lanes(inst)) : out.emit(inst);
  }
  for (const Store& s : program.stores()) out.store(s.kind, place[s.value], s.cell, s.target, s.imm);
  return out;
}

int blended(Program& program, const std::vector<int>& values, int lanes) {
  int all = -1;
  for (size_t first = 0; first < values.size(); ++first) {
    const int v = values[first];
    if (v < 0 || std::find(values.begin(), values.begin() + first, v) != values.begin() + first) continue;
    int mask = 0;
    for (size_t l = first; l < values.size(); ++l)
      if (values[l] == v) mask |= ((1 << lanes) - 1) << (lanes * l);
    all = all < 0 ? v : program.emit({.op = Op::Blend, .type = program.type(v), .a = all, .b = v, .imm = mask});
  }
  return all;
}

namespace {

// The registers of the components of a value.
struct Parts {
  int re, im;
};

// A component of a term, with the sign that a quarter turn gives it.
struct Component {
  int value;
  bool negative = false;
};

// A sum in the making, of one or more terms.
struct Summand {
  Component re, im;
  bool subtracted = false;
};

Summand turned(Parts p, int turn) {
  switch (turn) {
    case 1: return {{p.im, true}, {p.re}};
    case 2: return {{p.re}, {p.im}, true};
    case 3: return {{p.im}, {p.re, true}};
    default: return {{p.re}, {p.im}};
  }
}

bool is_product(const Program& program, int value) { return program.insts()[value].op == Op::Mul; }

Component added(Program& program, Component x, Component y) {
  const Type type = program.type(x.value);
  const auto emit = [&](Op op, int a, int b) { return Component{program.emit({.op = op, .type = type, .a = a, .b = b})}; };
  if (!x.negative && !y.negative) return emit(Op::Add, x.value, y.value);
  if (!x.negative) return emit(Op::Sub, x.value, y.value);
  if (!y.negative) return emit(Op::Sub, y.value, x.value);
  if (!is_product(program, x.value)) std::swap(x, y);
  return emit(Op::Sub, negated(program, x.value), y.value);
}

Summand added(Program& program, Summand x, Summand y) {
  const bool both = x.subtracted && y.subtracted;
  for (Summand* s : {&x, &y}) {
    if (both || !s->subtracted) continue;
    s->re.negative = !s->re.negative;
    s->im.negative = !s->im.negative;
  }
  return {added(program, x.re, y.re), added(program, x.im, y.im), both};
}

// With its signs made.
Parts plain(Program& program, const Summand& s) {
  const auto component = [&](const Component& c) { return c.negative != s.subtracted ? negated(program, c.value) : c.value; };
  return {component(s.re), component(s.im)};
}

Parts upright(Program& program, Parts parts, int turn) { return plain(program, turned(parts, turn)); }

Parts summed_parts(Program& program, std::vector<Summand> terms) {
  const Summand sum = summed(std::move(terms), [&](const Summand& x, const Summand& y) { return added(program, x, y); });
  return plain(program, sum);
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
    for (int i : live_nodes(g_, refs_of(outputs))) {
      if (g_[i].kind == Node::Kind::Input) {
        const int cell = 2 * g_[i].cells[0];
        parts_[i] = {p_.emit({.op = Op::Load, .type = Type::F32, .cell = cell}),
                     p_.emit({.op = Op::Load, .type = Type::F32, .cell = cell + 1})};
      } else {
        parts_[i] = sum(g_[i]);
      }
    }
    for (size_t k = 0; k < outputs.size(); ++k) {
      const Parts p = upright(p_, parts_[outputs[k].ref.node], outputs[k].ref.turn);
      p_.store(StoreKind::Full, scaled(p_, p.re), static_cast<int>(2 * k));
      p_.store(StoreKind::Full, scaled(p_, p.im), static_cast<int>(2 * k + 1));
    }
    return std::move(p_);
  }

 private:
  Parts sum(const Node& n) {
    if (!n.has_products()) {
      std::vector<Summand> terms;
      for (const Term& t : n.terms) terms.push_back(turned(parts_[t.ref.node], t.ref.turn));
      return summed_parts(p_, std::move(terms));
    }
    std::vector<Summand> terms;
    for (const Term& t : n.terms) {
      const auto product = [&](int part) {
        const int wide = p_.emit({.op = Op::Widen, .type = Type::F64, .a = part});
        if (t.coef.unit()) return wide;
        return p_.emit({.op = Op::Mul, .type = Type::F64, .a = wide, .b = p_.constant(Type::F64, {t.coef.lane(0)})});
      };
      const Parts& parts = parts_[t.ref.node];
      terms.push_back(turned({product(parts.re), product(parts.im)}, t.ref.turn));
    }
    const Parts wide = summed_parts(p_, std::move(terms));
    const auto narrow = [&](int v) { return p_.emit({.op = Op::Narrow, .type = Type::F32, .a = v}); };
    return {narrow(wide.re), narrow(wide.im)};
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
    for (int i : live_nodes(g_, refs_of(outputs))) {
      switch (g_[i].kind) {
        case Node::Kind::Input: parts_[i] = loaded(g_[i].cells); break;
        case Node::Kind::Sum: parts_[i] = sum(g_[i]); break;
        case Node::Kind::Regroup: parts_[i] = regrouped(g_[i]); break;
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
    return {shuffle(low, high, 0x88), shuffle(low, high, 0xDD)};
  }

  Parts sum(const Node& n) {
    std::vector<Summand> terms;
    for (const Term& t : n.terms) {
      Parts parts = parts_[t.ref.node];
      if (!t.coef.unit()) {
        std::vector<Real> lanes;
        for (int l = 0; l < 4; ++l) lanes.push_back(t.coef.lane(l));
        const int c = p_.constant(kType, lanes);
        for (int* part : {&parts.re, &parts.im}) *part = p_.emit({.op = Op::Mul, .type = kType, .a = *part, .b = c});
      }
      terms.push_back(turned(parts, t.ref.turn));
    }
    return summed_parts(p_, std::move(terms));
  }

  Parts regrouped(const Node& n) {
    std::vector<int> re, im, lane;
    for (const Point& p : n.points) {
      check(p.ref || p.lane == kAnyLane, "a lane holds a value, or anything");
      const Parts parts = p.ref ? upright(p_, parts_[p.ref.node], p.ref.turn) : Parts{-1, -1};
      re.push_back(parts.re), im.push_back(parts.im), lane.push_back(p.ref ? p.lane : kAnyLane);
    }
    bool in_place = true;
    for (int l = 0; l < 4; ++l) in_place = in_place && (lane[l] == l || lane[l] == kAnyLane);
    if (in_place) return {blended(p_, re, 1), blended(p_, im, 1)};
    return {picked(re, lane), picked(im, lane)};
  }

  // Lanes of up to four registers: two from the first two, two from the others, then both together. The first step
  // takes neighbours of the wanted lanes along, so that the vectors of one tile share it.
  int picked(const std::vector<int>& values, const std::vector<int>& from) {
    struct Lane {
      int value = -1, lane = 0;
    };
    Lane lanes[4];
    for (int l = 0; l < 4; ++l)
      if (values[l] >= 0) lanes[l] = {values[l], from[l]};
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
    return shuffle(lanes[0].value, lanes[2].value, imm);
  }

  void store(std::span<const Point> outputs) {
    std::map<std::pair<int, int>, std::vector<int>> held;  // by value: the outputs on its lanes
    for (size_t k = 0; k < outputs.size(); ++k) {
      std::vector<int>& lanes = held[{outputs[k].ref.node, outputs[k].ref.turn}];
      lanes.resize(4, -1);
      lanes[outputs[k].lane] = static_cast<int>(k);
    }
    for (const auto& [ref, lanes] : held) {
      const Parts parts = upright(p_, parts_[ref.first], ref.second);
      const int re = scaled(p_, parts.re), im = scaled(p_, parts.im);
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

Program lower_scalar(const Graph& graph, std::span<const Point> outputs) { return pruned(ScalarLowering(graph).run(outputs)); }
Program lower_split(const Graph& graph, std::span<const Point> outputs) { return pruned(SplitLowering(graph).run(outputs)); }

}  // namespace xfm
