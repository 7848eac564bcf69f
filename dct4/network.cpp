#include "dct4/network.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm::dct4 {

Value Network::add(Value a, Value b) {
  if (!a.minus && !b.minus) return op(Op::Add, type_, std::min(a.id, b.id), std::max(a.id, b.id));
  if (a.minus && b.minus) {
    check(signs_ == Signs::Folded, "explicit signs leave no negative sum");
    return {op(Op::Add, type_, std::min(a.id, b.id), std::max(a.id, b.id)).id, true};
  }
  return a.minus ? op(Op::Sub, type_, b.id, a.id) : op(Op::Sub, type_, a.id, b.id);
}

Value Network::negate(Value a) {
  if (signs_ == Signs::Folded) return {a.id, !a.minus};
  check(!a.minus, "explicit signs leave no negative value");
  return op(Op::Sub, type_, program_.emit({.op = Op::Zero, .type = type_}), a.id);
}

Value Network::mul(Value a, Real constant) {
  const int factor = program_.constant(type_, std::vector<Real>(width(type_), constant));
  return {op(Op::Mul, type_, a.id, factor).id, a.minus};
}

Value Network::mul(Value a, Value b) { return {op(Op::Mul, type_, a.id, b.id).id, a.minus != b.minus}; }

Value Network::load(Type type, int source, int cell) {
  return {program_.emit({.op = Op::Load, .type = type, .source = source, .cell = cell}), false};
}

void Network::store(Value v, int target, int cell) {
  if (v.minus) v = op(Op::Sub, type_, program_.emit({.op = Op::Zero, .type = type_}), v.id);
  program_.store(StoreKind::Full, v.id, cell, target);
}

Complex Network::rotate(Complex a, int num, int den) {
  const Real c = cos_turn(num, den), s = sin_turn(num, den);
  if (8 * num == den) return {mul(sub(a.re, a.im), c), mul(add(a.re, a.im), c)};
  return {sub(mul(a.re, c), mul(a.im, s)), add(mul(a.re, s), mul(a.im, c))};
}

Complex Network::rotate(Complex a, Value c, Value s) {
  return {sub(mul(a.re, c), mul(a.im, s)), add(mul(a.re, s), mul(a.im, c))};
}

int Network::count(bool additions) const {
  const std::vector<Inst>& insts = program_.insts();
  std::vector<char> live(insts.size());
  for (const Store& s : program_.stores()) live[s.value] = 1;
  int total = 0;
  for (size_t i = insts.size(); i-- > 0;) {
    if (!live[i]) continue;
    for (int o : {insts[i].a, insts[i].b})
      if (o >= 0) live[o] = 1;
    const bool sum = insts[i].op == Op::Add || insts[i].op == Op::Sub;
    total += additions ? sum : insts[i].op == Op::Mul;
  }
  return total;
}

}  // namespace xfm::dct4
