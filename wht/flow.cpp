#include "wht/flow.h"

#include <algorithm>
#include <span>

#include "generator/check.h"
#include "generator/core.h"

namespace xfm::wht {

namespace {

class Flow {
 public:
  explicit Flow(Type type) : type_(type) {}

  std::vector<int> load(int count, int stride) {
    std::vector<int> values;
    for (int i = 0; i < count; ++i) values.push_back(program_.emit({.op = Op::Load, .type = type_, .cell = i * stride}));
    return values;
  }

  // The levels between values: distances 1, 2, ... up to half their number.
  void butterflies(std::span<int> values) {
    for (size_t distance = 1; distance < values.size(); distance *= 2)
      for (size_t i = 0; i < values.size(); ++i) {
        if (i & distance) continue;
        const int a = values[i], b = values[i + distance];
        values[i] = emit(Op::Add, a, b);
        values[i + distance] = emit(Op::Sub, a, b);
      }
  }

  // A square group of registers: lane l of register r becomes lane r of register l. Each round interleaves registers
  // from both halves of the group, which rotates the bits of (register, lane) by one place.
  void transpose(std::span<int> group) {
    const size_t half = group.size() / 2;
    for (size_t round = 1; round < group.size(); round *= 2) {
      const std::vector<int> old(group.begin(), group.end());
      for (size_t i = 0; i < half; ++i) {
        group[2 * i] = emit(Op::UnpackLow, old[i], old[i + half]);
        group[2 * i + 1] = emit(Op::UnpackHigh, old[i], old[i + half]);
      }
    }
  }

  // The levels inside each register.
  void butterflies_inside(std::span<int> values) {
    const int lanes = width(type_);
    for (int distance = 1; distance < lanes; distance *= 2) {
      std::vector<int> signs;
      for (int l = 0; l < lanes; ++l) signs.push_back(l & distance ? -1 : 1);
      for (int& value : values) value = program_.signed_add(type_, exchanged(value, distance), value, signs);
    }
  }

  void store(const std::vector<int>& values, int stride, Scaling scaling) {
    for (size_t i = 0; i < values.size(); ++i) {
      int value = values[i];
      if (scaling == Scaling::Last) value = emit(Op::Mul, value, program_.emit({.op = Op::Scale, .type = type_}));
      program_.store(StoreKind::Full, value, static_cast<int>(i) * stride);
    }
  }

  Program program() && { return std::move(program_); }

 private:
  // Lane l of the result is lane l ^ distance.
  int exchanged(int value, int distance) {
    const int within = 128 / (single_precision(type_) ? 32 : 64);  // lanes of 128 bits, which an instruction permutes alike
    if (distance < within) {
      const int swapped = within == 4 ? (distance == 1 ? 0xB1 : 0x4E) : 0x55 & ((1 << width(type_)) - 1);
      return program_.emit({.op = Op::Permute, .type = type_, .a = value, .imm = swapped});
    }
    const int parts = width(type_) / within, apart = distance / within;
    const int swapped = parts == 2 ? 0x01 : apart == 1 ? 0xB1 : 0x4E;
    return program_.emit({.op = Op::Halves, .type = type_, .a = value, .b = value, .imm = swapped});
  }

  int emit(Op op, int a, int b) { return program_.emit({.op = op, .type = type_, .a = a, .b = b}); }

  Type type_;
  Program program_;
};

}  // namespace

Program block_flow(int order, Type type, Inside inside, Scaling scaling) {
  const int lanes = width(type), registers = (1 << order) / lanes;
  check(registers >= (inside == Inside::Transpose ? lanes : 1), "a block fills whole groups of registers");
  Flow flow(type);
  std::vector<int> values = flow.load(registers, lanes);
  if (inside == Inside::Permute) flow.butterflies_inside(values);
  for (int first = 0; first < registers && lanes > 1 && inside == Inside::Transpose; first += lanes) {
    const std::span<int> group = std::span(values).subspan(first, lanes);
    flow.transpose(group);
    flow.butterflies(group);
    flow.transpose(group);
  }
  flow.butterflies(values);
  flow.store(values, lanes, scaling);
  return std::move(flow).program();
}

Program column_flow(int order, int stride, Type type, Scaling scaling) {
  Flow flow(type);
  std::vector<int> values = flow.load(1 << order, stride);
  flow.butterflies(values);
  flow.store(values, stride, scaling);
  return std::move(flow).program();
}

Counts& Counts::operator+=(const Counts& other) {
  additions += other.additions;
  multiplications += other.multiplications;
  shuffles += other.shuffles;
  return *this;
}

Counts operator*(int times, const Counts& counts) {
  return {times * counts.additions, times * counts.multiplications, times * counts.shuffles};
}

Counts count(const Program& program) {
  const PortUse use = port_use(program);
  const int by_sign = static_cast<int>(std::ranges::count(program.insts(), Op::SignedAdd, &Inst::op));  // run where products do
  return {use.adds + by_sign, use.muls - by_sign, use.moves()};
}

}  // namespace xfm::wht
