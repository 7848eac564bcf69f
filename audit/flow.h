// The basic blocks of one function, in address order, with their edges and the back edges among them.
#pragma once

#include "instruction.h"

namespace xfm::audit {

struct Block {
  std::size_t first = 0;  // instruction indices, [first, last)
  std::size_t last = 0;
  std::vector<std::size_t> successors;
  std::vector<std::size_t> predecessors;
  bool leaves = false;  // returns, or hands over to another function
};

struct Flow {
  std::vector<Block> blocks;
  std::vector<std::uint64_t> stray_targets;  // jumps into the middle of an instruction
  std::vector<std::size_t> indirect_jumps;   // instruction indices
  std::vector<std::size_t> back_edges;       // instruction indices of jumps that close a loop
  std::vector<std::size_t> reachable;        // block indices in topological order (loops aside)
};

[[nodiscard]] Flow flow_of(const std::vector<Instruction>& code);

}  // namespace xfm::audit
