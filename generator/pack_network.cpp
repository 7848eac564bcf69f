#include "generator/pack_network.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm::pack {

namespace {

class Reader {
 public:
  explicit Reader(const Program& program) : program_(program), insts_(program.insts()), made_(insts_.size(), kNone) {}

  Network run() {
    const std::vector<char> live = live_insts();
    for (size_t i = 0; i < insts_.size(); ++i)
      if (live[i] && !is_leaf(insts_[i].op) && !is_scale(static_cast<int>(i))) made_[i] = add(static_cast<int>(i));
    for (const Store& s : program_.stores()) net_.outputs.push_back({s.cell, stored(s.value), s.target});
    std::ranges::sort(net_.outputs, {}, [](const Output& o) { return std::pair(o.target, o.cell); });
    find_heights();
    inherit_labels();
    return std::move(net_);
  }

 private:
  std::vector<char> live_insts() const {
    std::vector<char> live(insts_.size());
    for (const Store& s : program_.stores()) live[s.value] = 1;
    for (size_t i = insts_.size(); i-- > 0;)
      if (live[i])
        for (int o : {insts_[i].a, insts_[i].b})
          if (o >= 0) live[o] = 1;
    return live;
  }

  // The scale, or the scale widened.
  bool is_scale(int i) const {
    return insts_[i].op == Op::Scale || (insts_[i].op == Op::Widen && insts_[insts_[i].a].op == Op::Scale);
  }

  int append(Operation o, const Label& label) {
    const int made = static_cast<int>(net_.operations.size());
    o.label = label;
    if (o.a != kNone) net_.operations[o.a].users.push_back(made);
    if (o.b != kNone && o.b != o.a) net_.operations[o.b].users.push_back(made);
    net_.operations.push_back(std::move(o));
    return made;
  }

  int add(int i) {
    const Inst& inst = insts_[i];
    Operation o{Kind::Input, single_precision(inst.type)};
    const auto value = [&](int v) { return made_[v]; };
    switch (inst.op) {
      case Op::Load:
        o.source = inst.source, o.cell = inst.cell;
        net_.cells = std::max(net_.cells, inst.cell + 1);
        break;
      case Op::Add:
      case Op::Sub:
        if (insts_[inst.a].op == Op::Zero) {
          o.kind = Kind::Negate, o.a = value(inst.b);
        } else {
          o.kind = Kind::Sum, o.a = value(inst.a), o.b = value(inst.b), o.minus = inst.op == Op::Sub;
        }
        break;
      case Op::Mul: {
        const bool factor_first = is_leaf(insts_[inst.a].op) || is_scale(inst.a);
        const int factor = factor_first ? inst.a : inst.b;
        o.a = value(factor_first ? inst.b : inst.a);
        o.kind = is_scale(factor) ? Kind::Scale : Kind::Product;
        if (o.kind == Kind::Product) o.factor = program_.lanes(insts_[factor])[0];
        net_.wide_scale = net_.wide_scale || insts_[factor].op == Op::Widen;
        break;
      }
      case Op::Widen:
      case Op::Narrow:
        o.kind = inst.op == Op::Widen ? Kind::Widen : Kind::Narrow;
        o.a = value(inst.a);
        break;
      default: check(false, "only scalar programs are packed");
    }
    return append(std::move(o), inst.op == Op::Load ? Label{} : program_.label(i));
  }

  int stored(int value) {
    if (insts_[value].op != Op::Zero) return made_[value];
    if (zero_ == kNone) zero_ = append({Kind::Zero, single_precision(insts_[value].type)}, {});
    return zero_;
  }

  void find_heights() {
    for (size_t i = net_.operations.size(); i-- > 0;)
      for (int operand : {net_.operations[i].a, net_.operations[i].b})
        if (operand >= 0)
          net_.operations[operand].height = std::max(net_.operations[operand].height, net_.operations[i].height + 1);
  }

  void inherit_labels() {
    for (size_t i = net_.operations.size(); i-- > 0;) {
      Operation& o = net_.operations[i];
      if (o.in_memory() || !o.label.empty()) continue;
      OperandLabel label;
      for (int user : o.users) label.taken_by(net_.operations[user].label, net_.operations[user].b == static_cast<int>(i));
      if (!label.empty()) o.label = label.label();
    }
  }

  const Program& program_;
  const std::vector<Inst>& insts_;
  std::vector<int> made_;
  int zero_ = kNone;
  Network net_;
};

}  // namespace

Network read_network(const Program& program) { return Reader(program).run(); }

}  // namespace xfm::pack
