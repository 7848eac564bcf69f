// The promises, one function each, in two tables: what every function's code keeps and what the shared object keeps.
#pragma once

#include "body.h"

#include <set>

namespace xfm::audit {

struct Finding {
  std::string rule;
  std::string where;   // function, symbol, section or library
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

// What the rules of one body may ask of the library around it.
class Surroundings {
 public:
  Surroundings(const ElfImage& image, const Decoder& decoder);
  // The function at a call's or jump's target: one of the library's own or, through a stub or slot, an import.
  [[nodiscard]] std::string callee(const Instruction& transfer) const;
  [[nodiscard]] const std::string& name_at(std::uint64_t address) const { return functions_.at(address).name; }
  [[nodiscard]] bool is_own(const std::string& function) const { return own_.contains(function); }
  [[nodiscard]] const std::map<std::uint64_t, Symbol>& functions() const { return functions_; }

 private:
  const ElfImage& image_;
  const Decoder& decoder_;
  std::map<std::uint64_t, Symbol> functions_;  // by address
  std::set<std::string> own_;
};

struct BodyRule {
  const char* name;
  void (*check)(const Body&, const Surroundings&, Findings&);
};

struct LibraryRule {
  const char* name;
  void (*check)(const ElfImage&, const Surroundings&, const Expected&, Findings&);
};

[[nodiscard]] std::vector<BodyRule> code_rules();      // instructions: encoding, width, precision, ...
[[nodiscard]] std::vector<BodyRule> flow_rules();      // shape: straight line, calls, memory, frame, ...
[[nodiscard]] std::vector<LibraryRule> library_rules();

[[nodiscard]] std::string hex(std::uint64_t address);

}  // namespace xfm::audit
