// A program for every operation that only newer processors have, over every register type that has it: written as text,
// compiled and run beside its execution.
#pragma once

#include <vector>

#include "generator/machine.h"

namespace wide_operations {

using namespace xfm;

struct Case {
  Program program;
  bool single;  // of both arrays
};

inline std::vector<int> pattern(int lanes, int limit, int step) {
  std::vector<int> out(lanes);
  for (int l = 0; l < lanes; ++l) out[l] = (step * l + 3) % limit;
  return out;
}

inline std::vector<Case> cases() {
  std::vector<Case> all;
  const auto add = [&](Type type, auto make) {
    Case c{{}, single_precision(type)};
    const int w = width(type);
    const int a = c.program.emit({.op = Op::Load, .type = type, .cell = 0});
    const int b = c.program.emit({.op = Op::Load, .type = type, .cell = w});
    const int value = make(c.program, a, b);
    if (value >= 0) c.program.store(StoreKind::Full, value, 0);
    all.push_back(std::move(c));
  };
  const auto plain = [&](Op op, Type type, int imm) {
    add(type, [=](Program& p, int a, int b) { return p.emit({.op = op, .type = type, .a = a, .b = b, .imm = imm}); });
  };
  for (const Type type : kTypes) {
    const int w = width(type);
    std::vector<int> signs(w);
    for (int l = 0; l < w; ++l) signs[l] = l % 3 ? 1 : -1;
    add(type, [&](Program& p, int a, int b) { return p.signed_add(type, a, b, signs); });
    if (w == 1) continue;
    add(type, [&](Program& p, int a, int) { return p.pick(type, a, -1, pattern(w, w, w - 1)); });
    add(type, [&](Program& p, int a, int b) { return p.pick(type, a, b, pattern(w, 2 * w, 5)); });
    for (int count = 1; count < w; ++count) {
      add(type, [&](Program& p, int, int) { return p.emit({.op = Op::LoadPart, .type = type, .imm = count, .cell = 1}); });
      add(type, [&](Program& p, int a, int b) {
        p.store(StoreKind::Part, p.emit({.op = Op::Add, .type = type, .a = a, .b = b}), 1, 0, count);
        return -1;
      });
    }
    add(type, [&](Program& p, int, int) { return p.emit({.op = Op::Broadcast, .type = type, .cell = 3}); });
    if (type != Type::F64x2) add(type, [&](Program& p, int, int) { return p.emit({.op = Op::LoadDup, .type = type, .cell = 2}); });
    plain(Op::Blend, type, 0x5A69 & ((1 << w) - 1));
    plain(Op::UnpackLow, type, 0);
    plain(Op::UnpackHigh, type, 0);
    plain(Op::Shuffle, type, single_precision(type) ? 0x6C : 0x96 & ((1 << w) - 1));
    add(type, [&](Program& p, int a, int) {
      return p.emit({.op = Op::Permute, .type = type, .a = a, .imm = single_precision(type) ? 0x39 : 0x5A & ((1 << w) - 1)});
    });
    if (bits(type) < 512) plain(Op::AddSub, type, 0);
    if (bits(type) > 128) {
      plain(Op::Halves, type, bits(type) == 512 ? 0x4E : 0x21);
      const Type half = vector_type(single_precision(type), w / 2);
      add(type, [&](Program& p, int a, int b) {
        const int low = p.emit({.op = Op::LowHalf, .type = half, .a = a}), high = p.emit({.op = Op::HighHalf, .type = half, .a = b});
        return p.emit({.op = Op::Join, .type = type, .a = high, .b = low});
      });
    } else {
      add(type, [&](Program& p, int a, int) { return p.emit({.op = Op::LoadLane, .type = type, .a = a, .imm = 1, .cell = 5}); });
      add(type, [&](Program& p, int a, int b) {
        p.store(StoreKind::High, a, 0);
        p.store(StoreKind::Low, b, w / 2);
        return -1;
      });
    }
    if (single_precision(type) && w < 16) {  // to double and back, times something that a single would round
      const Type wide = vector_type(false, w);
      add(type, [&](Program& p, int a, int b) {
        const int x = p.emit({.op = Op::Widen, .type = wide, .a = a}), y = p.emit({.op = Op::Widen, .type = wide, .a = b});
        return p.emit({.op = Op::Narrow, .type = type, .a = p.emit({.op = Op::Mul, .type = wide, .a = x, .b = y})});
      });
    }
  }
  plain(Op::Insert, Type::F32x4, 2 * 4 + 1);
  add(Type::F32x4, [](Program& p, int a, int b) {
    p.store(StoreKind::Lane, p.emit({.op = Op::Sub, .type = Type::F32x4, .a = a, .b = b}), 9, 0, 3);
    const int low = p.emit({.op = Op::Widen, .type = Type::F64x2, .a = a});
    return p.emit({.op = Op::Narrow, .type = Type::F32x4, .a = p.emit({.op = Op::Mul, .type = Type::F64x2, .a = low, .b = low})});
  });
  return all;
}

}  // namespace wide_operations
