// The plan tables of the complex transforms.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>

#include "dft/transform.h"
#include "generator/passes.h"

namespace xfm {

struct ComplexRow {
  ComplexPlan plan;
  std::string text;        // as the table has it
  Counts reference;        // additions and multiplications of real numbers, the scale left out
  Counts built;            // what a kernel must have: the reference, or a departure with its reason
  std::string reason;      // empty where the reference is met
  std::string where;       // file and line
};

struct ComplexTables {
  // Both tables, validated: all lengths 2 to 64 in both precisions, lengths of plans, departures with reasons.
  static ComplexTables read(const std::filesystem::path& plans, const std::filesystem::path& lane_blocks);

  const ComplexRow& row(int precision, int length) const;

  std::map<std::pair<int, int>, ComplexRow> rows;
  std::map<int, Recipes> recipes;  // by precision
};

}  // namespace xfm
