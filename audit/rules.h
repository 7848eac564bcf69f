// The promises, one function each, in two tables: what every function's code keeps and what the shared object keeps.
#pragma once

#include <set>

#include "body.h"

namespace xfm::audit {

struct Finding {
  std::string rule;
  std::string where;  // function, symbol, section or library
  std::string detail;
  auto operator<=>(const Finding&) const = default;
};

using Findings = std::vector<Finding>;

struct Expected {
  std::string soname;
  std::set<std::string> needed;
  std::set<std::string> exports;
  std::set<std::string> imports;
};

struct BodyRule {
  const char* name;
  void (*check)(const Body&, const Surroundings&, Findings&);
};

struct LibraryRule {
  const char* name;
  void (*check)(const ElfImage&, const Surroundings&, const Expected&, Findings&);
};

[[nodiscard]] std::vector<BodyRule> code_rules();  // instructions: encoding, width, precision, ...
[[nodiscard]] std::vector<BodyRule> flow_rules();  // shape: straight line, calls, memory, frame, ...
[[nodiscard]] std::vector<LibraryRule> library_rules();

}  // namespace xfm::audit
