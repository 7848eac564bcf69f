// Real arithmetic on the machine form: every value one register of independent columns (or one scalar).
#pragma once

#include "generator/machine.h"

namespace xfm::dct4 {

// Whether a change of sign is an operation of its own, zero minus the value, or is folded into the sums that use it.
enum class Signs { Explicit, Folded };

struct Value {
  int id = -1;
  bool minus = false;  // with folded signs: stands for the negative
};

struct Complex {
  Value re, im;
};

class Network {
 public:
  Network(Type type, Signs signs) : type_(type), signs_(signs) {}

  Type type() const { return type_; }
  const Program& program() const { return program_; }

  Value add(Value a, Value b);
  Value sub(Value a, Value b) { return add(a, {b.id, !b.minus}); }
  Value negate(Value a);
  Value mul(Value a, Real constant);
  Value mul(Value a, Value b);
  Value op(Op kind, Type type, int a, int b = -1, int imm = 0) {
    loops_.next();
    program_.set_label(loops_.label());
    return {program_.emit({.op = kind, .type = type, .a = a, .b = b, .imm = imm}), false};
  }
  Value load(int source, int cell) { return load(type_, source, cell); }
  Value load(Type type, int source, int cell);
  void store(Value v, int target, int cell);

  Complex add(Complex a, Complex b) { return {add(a.re, b.re), add(a.im, b.im)}; }
  Complex sub(Complex a, Complex b) { return {sub(a.re, b.re), sub(a.im, b.im)}; }
  Complex conjugate(Complex a) { return {a.re, negate(a.im)}; }
  Complex quarter(Complex a) { return {negate(a.im), a.re}; }  // times i
  // Times exp(2 pi i num/den) with literal factors; an eighth turn shares its one factor.
  Complex rotate(Complex a, int num, int den);
  // Times c + is, given as values.
  Complex rotate(Complex a, Value c, Value s);

  // Operations that reach a store; a change of sign counts as an addition.
  int additions() const { return count(true); }
  int multiplications() const { return count(false); }

  // An iteration of a loop of the flow.
  struct Loop : xfm::Loop {
    Loop(Network& net, std::string name, int iteration) : xfm::Loop(net.loops_, std::move(name), iteration) {}
  };

 private:
  int count(bool additions) const;

  Type type_;
  Signs signs_;
  Program program_;
  LoopNest loops_;
};

}  // namespace xfm::dct4
