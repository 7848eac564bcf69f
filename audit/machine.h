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

// What a set zero flag means, as far as the last comparison tells.
struct ZeroTest {
  enum class Kind { None, Alignment, BufferNull, Known };
  Kind kind = Kind::None;
  bool of_src = false;  // Alignment: the low bits under `mask` of src, of dst, of both are zero
  bool of_dst = false;
  std::uint64_t mask = 0;
  bool zero = false;  // Known: whether the flag is set
  bool operator==(const ZeroTest&) const = default;
};

enum class BufferArgument : char { Untested, Null, Given };

// What is never joined: states before and after the first access to src or dst, with and without a buffer of the
// caller's. So what was allocated and what came as an argument stay apart up to the end.
struct Path {
  bool touched = false;
  BufferArgument buffer = BufferArgument::Untested;
  auto operator<=>(const Path&) const = default;
};

struct State {
  std::array<Value, 16> registers{};
  std::array<Value, 8> masks{};
  std::map<StackSlot, Value> slots;  // only slots that hold something worth knowing
  ZeroTest test;
  int src_alignment = 1;  // proven by the gate
  int dst_alignment = 1;
  Path path;
  bool stored = false;  // dst was stored to on some path to here
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
  bool operator==(const Access&) const = default;
};

// What the machine saw while running the whole function.
struct Trace {
  std::map<std::pair<std::size_t, Path>, State> at_block;  // on reaching a block, by block index and kind of path
  // Before each jump, call and return that is reached, by instruction index; once for each kind of path.
  std::vector<std::pair<std::size_t, State>> before_transfer;
  std::vector<bool> reached;     // per instruction
  std::vector<Access> accesses;  // in the order of execution; twice where paths differ in it
  std::int64_t deepest = 0;      // lowest stack offset from entry that is allocated or touched, worst case
  bool stack_lost = false;       // the stack pointer became unknown somewhere

  // The state in which a block is reached before, or after, the first access; null if it never is.
  [[nodiscard]] const State* reaching(std::size_t block, bool touched) const;
};

// `allocations` are the call instructions whose result is a work buffer.
[[nodiscard]] Trace run(const std::vector<Instruction>& code, const Flow& flow, const std::vector<bool>& allocations);

}  // namespace xfm::audit
