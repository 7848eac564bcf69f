// What the benchmarks know about kernels besides their time: bounds that stand here as tables, and what the build reported.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "generator/table.h"

namespace xfm::bench {

// A table that names its own columns: the first line that is neither empty nor begins with '#'.
Table parse_table(const std::string& text, const std::string& name);

// Cycles by kernel. The layouts share theirs (they differ in a store or two of the smallest lengths).
using Cycles = std::map<std::string, double>;

Cycles floors();       // lower bound of the base's plan in its working form
// Lower bound of the same operations in registers that are always full, of the widest kind that the row of `copy` in
// plans/targets.tsv has, without moves of lanes; empty for a library without a row.
Cycles wide_floors(const std::string& copy);
Cycles chains();       // longest chain of dependent operations
Table hadamard_floors();
double wide_hadamard_floor(const std::string& copy, int order, bool single);
// Of a DCT-IV that is one straight line; 0 for longer ones.
double wide_dct4_floor(const std::string& copy, int length, bool single);

// Of the build this program stands in; empty elsewhere. For which the generated body of a complex kernel keeps the busiest
// port, and the audit's account of compiled bodies by function (of a kernel with two bodies the first).
Cycles ports();
std::map<std::string, TableRow> bodies();

}  // namespace xfm::bench
