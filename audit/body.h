// One function of the library taken apart: its code, its blocks, what the machine saw, and its straight lines. A line
// begins in the block of the first access to src or dst and runs without a choice to the return.
#pragma once

#include "machine.h"
#include "promise.h"
#include "surroundings.h"

namespace xfm::audit {

// Counts by column, in the order of count_columns().
using Counts = std::map<std::string, int>;
[[nodiscard]] const std::vector<std::string>& count_columns();

struct Line {
  std::string name;                       // aligned, unaligned, plain
  std::vector<std::size_t> instructions;  // in the order of execution
  Counts counts;
};

struct Body {
  std::string name;
  std::uint64_t address = 0;
  std::uint64_t bytes = 0;
  std::optional<Promise> promise;
  std::vector<Instruction> code;
  Flow flow;
  Trace trace;
  std::vector<Line> lines;
  std::vector<std::size_t> side_entries;  // blocks that belong to a line on some paths only, by index
  Counts whole;                           // counts over all of the function
  int frame_bytes = 0;

  [[nodiscard]] bool is_straight() const { return promise && promise->shape == Shape::StraightLine; }
  [[nodiscard]] bool is_passes() const { return promise && promise->shape == Shape::Passes; }
  [[nodiscard]] const Instruction& at(const Access& access) const { return code[access.instruction]; }
};

inline constexpr const char* kAllocator = "xfmMalloc";
inline constexpr const char* kDeallocator = "xfmFree";

[[nodiscard]] Body analyse(const ElfImage& image, const Decoder& decoder, const Surroundings& around,
                           const Symbol& function);

}  // namespace xfm::audit
