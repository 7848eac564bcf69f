// Tables of expected counts, and their comparison with what the bodies hold.
//
// A table is tab-separated with a header; its first column is `function` or `name`. A cell is a number, "<=" and a
// number, or "-" for no demand. Which columns count is said beside the path, "path:column,column=sum,column": a column
// is compared with the count of its own name or with the named sum of counts ("vaddss+vsubss"), "<=" before it makes
// its cells upper bounds. A path alone takes every column. A row holds for every line of its function and its twin.
#pragma once

#include "audit.h"

namespace xfm::audit {

struct BadTable : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Demand {
  std::string column;  // as in the header
  std::vector<std::string> summands;
  int value = 0;
  bool at_most = false;
};

struct CountTable {
  std::string path;
  std::map<std::string, std::vector<Demand>> rows;  // by function
};

[[nodiscard]] CountTable read_count_table(const std::string& path_and_columns);
void compare_counts(const std::vector<CountTable>& tables, const std::vector<BodySummary>& bodies, Findings& findings);

// Splits at `separator`; keeps empty fields.
[[nodiscard]] std::vector<std::string> split(const std::string& text, char separator);

}  // namespace xfm::audit
