// The plans of the Walsh-Hadamard kernels (plans/wht_plans.tsv): passes, instruction counts, work buffers.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "generator/table.h"
#include "wht/flow.h"

namespace xfm::wht {

inline constexpr int kOrders = 13;
inline constexpr int kRegisterOrders = 7;  // up to here one pass and no work buffer
inline constexpr int kLargestPass = 8;     // what registers of 512 bits hold

struct Plan {
  int order = 0;
  Type type = Type::F32;    // of the values a body holds
  std::vector<int> passes;  // orders, lowest stride first
  Inside inside = Inside::Transpose;
  Counts limit;             // of one call; shuffles may be fewer
  int main_bytes = 0, staging_bytes = 0;
  TableRow row;             // where it comes from

  [[nodiscard]] int length() const { return 1 << order; }
  [[nodiscard]] int element_bytes() const { return bits(type) / 8 / width(type); }
  [[nodiscard]] int block() const { return 1 << passes[0]; }  // elements of one block of the first pass
  // Elements that the passes before the last one transform together: with three passes a chunk in the staging region.
  [[nodiscard]] int chunk() const { return length() >> passes.back(); }
  // Whether registers are wider than the alignment that arrays and buffers may have.
  [[nodiscard]] bool wide() const { return bits(type) > 128; }
  [[nodiscard]] std::string form() const;  // as the row chooses it: lanes and what is done inside a register
  [[nodiscard]] std::string note() const;  // passes and counts, for readers of the unit
};

// The plans of a target and an element type ("32f", "64f"), by order from 1 on, complete and consistent.
std::vector<Plan> read_plans(const std::filesystem::path& table, const std::string& target, const std::string& type);

}  // namespace xfm::wht
