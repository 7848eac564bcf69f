// A model of the core that runs a body, to tell orders of its operations apart: how long a call takes among others like it.
//
// Operations are handed out in order, up to six a cycle, into a queue of 64, where they wait for their operands. Each cycle
// the oldest that are ready start, one on a port: two ports multiply, two add, one of each shuffles. A straight line fills
// the queue; an operation that is handed out long before its operands are there keeps the next call out of it. The
// registers are given to values as they come, and what does not fit is stored and loaded again. (Figures of a core with
// 256-bit units; which of two orders is better hardly depends on them.)
#pragma once

#include <vector>

#include "generator/core.h"

namespace xfm {

constexpr int kRegisters = 16;  // of the base

// A load that the operation using it does itself needs no register.
inline bool folds(const Inst& inst) { return inst.op == Op::Load; }

double cycles_per_call(const Program& program, const std::vector<int>& order, int registers = kRegisters);

}  // namespace xfm
