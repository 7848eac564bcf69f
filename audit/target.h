// What a copy of the library may be made of: a row of plans/targets.tsv, as far as the audit asks.
#pragma once

#include <set>
#include <string>

namespace xfm::audit {

struct Target {
  std::string name;
  std::set<std::string> sets;  // instruction sets, as the decoder names them
  int widest = 0;              // bits of a register
  bool is_base = false;        // the one library that has the stated working forms

  [[nodiscard]] bool admits(const std::string& set) const { return sets.contains(set); }
};

[[nodiscard]] Target read_target(const std::string& path, const std::string& name);

}  // namespace xfm::audit
