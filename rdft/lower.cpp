// The precision rule of the single-precision kernels stands in the types of this file. A held value is a single; an
// open expression is a double. Sums of held values are held; only what has been widened can meet a constant, and what
// has met one stays open until it is narrowed. So a flow cannot be lowered with a product in single precision, with two
// roundings inside an expression, or with a double value carried from stage to stage.
//
// In the double-precision kernels both are doubles and widening and narrowing are nothing.
#include "rdft/lower.h"

#include <optional>
#include <variant>

#include "generator/check.h"
#include "generator/passes.h"

namespace xfm::rdft {

namespace {

struct Held {
  int value;
};
struct Open {
  int value;
};
using Value = std::variant<Held, Open>;

class Arithmetic {
 public:
  Arithmetic(Program& program, Precision precision)
      : p_(program), type_(precision == Precision::Single ? Type::F32 : Type::F64) {}

  // Operations emitted from now on do what belongs to this step of a node.
  void set_label(const Label& node, const std::string& step) {
    label_ = node;
    if (!label_.empty()) label_.push_back({step});
    p_.set_label(label_);
  }

  Held load(int cell) { return {p_.emit({.op = Op::Load, .type = type_, .cell = cell})}; }
  Held twice(Held a) { return {binary(Op::Mul, type_, a.value, p_.constant(type_, {2}))}; }
  template <class V>
  V add(V a, V b) { return {binary(Op::Add, type(a), a.value, b.value)}; }
  template <class V>
  V sub(V a, V b) { return {binary(Op::Sub, type(a), a.value, b.value)}; }
  template <class V>
  V negated(V a) { return sub(V{zero(type(a))}, a); }
  Held scaled(Held a) { return {binary(Op::Mul, type_, scale(), a.value)}; }

  Open widen(Held a) { return {wide() ? a.value : convert(Op::Widen, Type::F64, a.value)}; }
  // A node is widened once for all steps that use it.
  Open widen(Held a, const Label& node) {
    const Label label = label_;
    set_label(node, "widen");
    const Open wide = widen(a);
    label_ = label;
    p_.set_label(label_);
    return wide;
  }
  Open product(Real c, Open a) { return {binary(Op::Mul, Type::F64, p_.constant(Type::F64, {c}), a.value)}; }
  // The scale is a literal of the kernel's precision; it is widened like any held value.
  Open scaled(Open a) { return {binary(Op::Mul, Type::F64, widen({scale()}).value, a.value)}; }
  Held narrow(Open a) { return {wide() ? a.value : convert(Op::Narrow, Type::F32, a.value)}; }

  void store(Held a, int cell) { p_.store(StoreKind::Full, a.value, cell); }
  void store_zero(int cell) { p_.store(StoreKind::Full, zero(type_), cell); }

 private:
  bool wide() const { return type_ == Type::F64; }
  Type type(Held) const { return type_; }
  Type type(Open) const { return Type::F64; }
  int scale() { return p_.emit({.op = Op::Scale, .type = type_}); }
  int zero(Type type) { return p_.emit({.op = Op::Zero, .type = type}); }
  int convert(Op op, Type type, int a) { return p_.emit({.op = op, .type = type, .a = a}); }
  int binary(Op op, Type type, int a, int b) { return p_.emit({.op = op, .type = type, .a = a, .b = b}); }

  Program& p_;
  Type type_;
  Label label_;
};

// Adds and subtracts the terms one after the other, beginning with the first that is not subtracted.
template <class T, class Operand>
T chain(Arithmetic& math, const Node& node, Operand operand) {
  const std::vector<Term>& terms = node.terms;
  const auto value = [&](size_t i) {
    math.set_label(node.label, "term " + std::to_string(i));
    return operand(terms[i]);
  };
  size_t first = 0;
  while (terms[first].ref.turn != 0) ++first;
  T sum = value(first);
  for (size_t i = 0, step = 0; i < terms.size(); ++i) {
    if (i == first) continue;
    const T next = value(i);
    math.set_label(node.label, "sum " + std::to_string(step++));
    sum = terms[i].ref.turn == 0 ? math.add(sum, next) : math.sub(sum, next);
  }
  return sum;
}

class Lowering {
 public:
  Lowering(const Flow& flow, Layout source, Precision precision)
      : flow_(flow), source_(source), math_(program_, precision), values_(flow.graph.size()) {}

  Program run(Layout target) {
    for (int i : live_nodes(flow_.graph, flow_.outputs)) values_[i] = value(i);
    const int n = static_cast<int>(flow_.outputs.size());
    for (int place = 0; place < n; ++place) store(flow_.outputs[place], position(target, n, place));
    for (int cell : zero_positions(target, n)) math_.store_zero(cell);
    return std::move(program_);
  }

 private:
  Value value(int i) {
    const Node& node = flow_.graph[i];
    if (node.kind == Node::Kind::Input) return input(node.cells[0]);
    if (!flow_.is_wide(i)) return chain<Held>(math_, node, [&](const Term& t) { return held(t.ref.node); });
    const Open sum = chain<Open>(math_, node, [&](const Term& t) { return operand(t); });
    if (flow_.stays_open(i)) return sum;
    math_.set_label(node.label, "narrow");
    return math_.narrow(sum);
  }

  Held input(int place) {
    math_.set_label({}, "");
    const Held loaded = math_.load(position(source_, static_cast<int>(flow_.outputs.size()), place));
    return flow_.doubled[place] && !flow_.folded[place] ? math_.twice(loaded) : loaded;
  }

  Held held(int node) const {
    check(values_[node] && std::holds_alternative<Held>(*values_[node]), "a sum of held values has held operands");
    return std::get<Held>(*values_[node]);
  }

  Open operand(const Term& t) {
    const Value& v = *values_[t.ref.node];
    const Node& node = flow_.graph[t.ref.node];
    const Open a = std::holds_alternative<Open>(v) ? std::get<Open>(v) : math_.widen(std::get<Held>(v), node.label);
    const bool folded = node.kind == Node::Kind::Input && flow_.folded[node.cells[0]];
    if (t.coef.unit()) return a;
    return math_.product(folded ? 2 * t.coef.lane(0) : t.coef.lane(0), a);
  }

  // The scale is the last multiplication, behind it only the subtraction from zero of a negated cell.
  void store(Ref cell, int position) {
    math_.set_label(flow_.graph[cell.node].label, "store");
    const auto out = [&](auto v) { return cell.turn == 2 ? math_.negated(math_.scaled(v)) : math_.scaled(v); };
    const Value& v = *values_[cell.node];
    const Held* const held = std::get_if<Held>(&v);
    math_.store(held ? out(*held) : math_.narrow(out(std::get<Open>(v))), position);
  }

  const Flow& flow_;
  Layout source_;
  Program program_;
  Arithmetic math_;
  std::vector<std::optional<Value>> values_;
};

}  // namespace

Program lower(const Flow& flow, Layout source, Layout target, Precision precision) {
  return Lowering(flow, source, precision).run(target);
}

void check_lowered(const Program& program, const Flow& flow, const FlowCounts& counts, Precision precision) {
  const int n = static_cast<int>(flow.outputs.size());
  const bool single = precision == Precision::Single;
  const auto equal = [](int got, int expected, const char* what) {
    check(got == expected, std::string("a body has ") + std::to_string(got) + " " + what + " where its flow has " +
                               std::to_string(expected));
  };
  const int open = single ? counts.last_narrowings : 0;
  const auto both = [&](Op op) { return count(program, op, Type::F32) + count(program, op, Type::F64); };
  const auto sums = [&](Type type) { return count(program, Op::Add, type) + count(program, Op::Sub, type); };
  equal(sums(Type::F32), single ? counts.single_additions : 0, "single additions");
  equal(sums(Type::F64), single ? counts.double_additions : counts.additions, "double additions");
  equal(count(program, Op::Mul, Type::F32), single ? n - open + counts.doublings : 0, "single multiplications");
  equal(count(program, Op::Mul, Type::F64), single ? counts.multiplications + open : counts.multiplications + counts.doublings + n,
        "double multiplications");
  equal(both(Op::Widen), single ? counts.widenings : 0, "widenings");
  equal(both(Op::Narrow), single ? counts.inner_narrowings + counts.last_narrowings : 0, "narrowings");
  equal(both(Op::Load), n, "loads");
}

}  // namespace xfm::rdft
