// The plans of the DCT-IV's kernels (plans/dct4_kernels.tsv).
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "generator/table.h"

namespace xfm::dct4 {

enum class KernelKind { Rotation, Lifting, Straight, Forward, Synthesis, Combine };

// The split factors of an inner transform, outermost first; what they leave is a pair of reals.
using Splits = std::vector<int>;

struct KernelPlan {
  KernelKind kind;
  int length;
  int columns;               // of a straight kernel, else 0
  Splits splits, group_splits;
  bool fold_parts;           // the outermost split takes the conjugations of its parts into its own constants and sums
  bool finished_order;       // of the stores
  int multiplications, additions;
  TableRow row;              // where it comes from

  [[nodiscard]] bool whole() const { return kind <= KernelKind::Straight; }  // a whole transform in scalars
  [[nodiscard]] std::string name() const;                                    // of its function
};

// The kernels of one precision ("32f", "64f"), in the order of the table.
std::vector<KernelPlan> read_kernel_plans(const std::filesystem::path& table, const std::string& type);

}  // namespace xfm::dct4
