// A small abstract machine: it runs a function's integer side and knows, at every instruction, which registers and
// stack slots hold src, dst, the flag, a stack or a constant-pool address. What it cannot know it calls unknown; it
// never guesses.
#pragma once

#include <array>
#include <map>

#include "flow.h"
#include "value.h"

namespace xfm::audit {

struct StackSlot {
  Region region;
  std::int64_t offset;
  auto operator<=>(const StackSlot&) const = default;
};

// "Zero flag set means the low bits under `mask` of the named pointers are all zero."
struct AlignmentTest {
  bool valid = false;
  bool of_src = false;
  bool of_dst = false;
  std::uint64_t mask = 0;
  bool operator==(const AlignmentTest&) const = default;
};

struct State {
  std::array<Value, 16> registers{};
  std::map<StackSlot, Value> slots;  // only slots that hold something worth knowing
  AlignmentTest test;
  int src_alignment = 1;  // proven by the gate
  int dst_alignment = 1;
  bool touched = false;  // src or dst was accessed; states before and after that are never joined
  bool stored = false;   // dst was stored to on some path to here
  bool upper_dirty = false;
  bool operator==(const State&) const = default;
};

struct Access {
  std::size_t instruction = 0;
  Region region = Region::None;
  bool exact = false;
  std::int64_t offset = 0;
  int bytes = 0;
  bool reads = false;
  bool writes = false;
  bool after_store = false;  // a store to dst may have come before
  int proven_alignment = 1;  // of the address, as far as the machine knows
};

// What the machine saw while running the whole function.
struct Trace {
  // On reaching a block, by block index and by whether src or dst was accessed before.
  std::map<std::pair<std::size_t, bool>, State> at_block;
  // Before each jump, call and return that is reached, by instruction index; twice where both kinds of paths meet.
  std::vector<std::pair<std::size_t, State>> before_transfer;
  std::vector<bool> reached;     // per instruction
  std::vector<Access> accesses;  // in the order of execution
  std::int64_t deepest = 0;      // lowest stack offset from entry that is allocated or touched, worst case
  bool stack_lost = false;       // the stack pointer became unknown somewhere
};

// `allocations` are the call instructions whose result is a work buffer.
[[nodiscard]] Trace run(const std::vector<Instruction>& code, const Flow& flow, const std::vector<bool>& allocations);

}  // namespace xfm::audit
