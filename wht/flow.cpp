#include "wht/flow.h"

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

  void store(const std::vector<int>& values, int stride, Scaling scaling) {
    for (size_t i = 0; i < values.size(); ++i) {
      int value = values[i];
      if (scaling == Scaling::Last) value = emit(Op::Mul, value, program_.emit({.op = Op::Scale, .type = type_}));
      program_.store(StoreKind::Full, value, static_cast<int>(i) * stride);
    }
  }

  Program program() && { return std::move(program_); }

 private:
  int emit(Op op, int a, int b) { return program_.emit({.op = op, .type = type_, .a = a, .b = b}); }

  Type type_;
  Program program_;
};

}  // namespace

Program block_flow(int order, Type type, Scaling scaling) {
  const int lanes = width(type), registers = (1 << order) / lanes;
  check(registers >= lanes, "a block fills whole groups of registers");
  Flow flow(type);
  std::vector<int> values = flow.load(registers, lanes);
  for (int first = 0; first < registers && lanes > 1; first += lanes) {
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
  return {use.adds, use.muls, use.moves()};
}

}  // namespace xfm::wht
