// Additions and multiplications of a program, lane by lane, as far as a store is reached from them. Lanes that are
// multiplied by 1 or -1 beside others count apart, and of products those of which the negative is there already.
#pragma once

#include <set>
#include <tuple>
#include <vector>

#include "generator/execute.h"

namespace xfm::test {

struct LaneCounts {
  int sums = 0, products = 0;
  int kept = 0, opposite = 0;  // opposite ones are products, too
  friend bool operator==(const LaneCounts& a, const LaneCounts& b) { return a.sums == b.sums && a.products == b.products; }
};

class LiveLanes {
 public:
  explicit LiveLanes(const Program& program) : program_(program) {
    for (const Inst& inst : program.insts()) live_.emplace_back(width(inst.type));
    for (const Store& s : program.stores())
      for (size_t l = 0; l < live_[s.value].size(); ++l)
        if (stores(s, static_cast<int>(l))) live_[s.value][l] = true;
    for (int i = static_cast<int>(live_.size()) - 1; i >= 0; --i) visit(i);
  }
  [[nodiscard]] LaneCounts counts() const { return counts_; }

 private:
  bool stores(const Store& s, int lane) const {
    const int half = width(program_.type(s.value)) / 2;
    switch (s.kind) {
      case StoreKind::Full: return true;
      case StoreKind::Low: return lane < half;
      case StoreKind::High: return lane >= half;
      case StoreKind::Part: return lane < s.imm;
      case StoreKind::Lane: return lane == s.imm;
    }
    return false;
  }

  void visit(int i) {
    const Inst& inst = program_.insts()[i];
    const bool sum = inst.op == Op::Add || inst.op == Op::Sub || inst.op == Op::AddSub || inst.op == Op::SignedAdd;
    const std::vector<int> from = sum || inst.op == Op::Mul ? std::vector<int>() : lanes_of_operands(inst);
    for (size_t l = 0; l < live_[i].size(); ++l) {
      if (!live_[i][l]) continue;
      counts_.sums += sum;
      if (inst.op == Op::Mul) count_product(inst, l);
      if (from.empty()) {
        for (const int operand : {inst.a, inst.b})
          if (operand >= 0) live_[operand][l] = true;
      } else if (from[l] >= kSecond) {
        live_[inst.b][from[l] - kSecond] = true;
      } else if (from[l] >= 0) {
        live_[inst.a][from[l]] = true;
      }
    }
  }

  void count_product(const Inst& product, size_t lane) {
    const bool first = program_.insts()[product.a].op == Op::Constant;
    const Inst& factor = program_.insts()[first ? product.a : product.b];
    const Real c = factor.op == Op::Constant ? program_.lanes(factor)[lane] : Real(0);
    if (is_unit(c)) {
      ++counts_.kept;
      return;
    }
    ++counts_.products;
    if (c == 0) return;
    const auto key = [&](Real x) { return std::tuple(first ? product.b : product.a, lane, static_cast<double>(x)); };
    counts_.opposite += constants_.contains(key(-c));
    constants_.insert(key(c));
  }

  // Which lane of which operand each lane of a move is, as the interpreter does it with numbered lanes; -1 from memory.
  std::vector<int> lanes_of_operands(const Inst& inst) const {
    std::vector<int> from(width(inst.type), -1);
    if (inst.a < 0) return from;
    Program probe;
    Inst move = inst;
    move.source = 1, move.cell = 0;
    move.a = probe.emit({.op = Op::Load, .type = program_.type(inst.a)});
    if (inst.b >= 0) move.b = probe.emit({.op = Op::Load, .type = program_.type(inst.b), .cell = kSecond});
    const int made = inst.op == Op::Pick ? probe.pick(inst.type, move.a, move.b, program_.pattern(inst)) : probe.emit(move);
    probe.store(StoreKind::Full, made, 0);
    Elements numbers(2 * kSecond);
    for (size_t k = 0; k < numbers.size(); ++k) numbers[k] = static_cast<double>(k) + 1;
    std::vector<Elements> out{Elements(from.size())};
    execute(probe, {numbers, Elements(kSecond)}, 1, out);
    for (size_t l = 0; l < from.size(); ++l) from[l] = static_cast<int>(out[0][l]) - 1;
    return from;
  }

  static constexpr int kSecond = 16;  // number of the second operand's lane 0
  const Program& program_;
  std::vector<std::vector<char>> live_;
  LaneCounts counts_;
  std::set<std::tuple<int, size_t, double>> constants_;  // of products: what is multiplied, in which lane, by what
};

}  // namespace xfm::test
