// The whole audit: every function of the library through every rule, then the library itself, then the counts.
#pragma once

#include "rules.h"

namespace xfm::audit {

// What is kept of a body once its rules have run.
struct BodySummary {
  std::string function;
  std::optional<Promise> promise;
  std::vector<std::pair<std::string, Counts>> lines;  // by line name; a single "whole" where there is no line
  int frame_bytes = 0;
  std::uint64_t code_bytes = 0;
};

struct AuditResult {
  Findings findings;
  std::vector<BodySummary> bodies;  // by address
};

[[nodiscard]] AuditResult audit(const ElfImage& image, const Expected& expected, const Target& target);

}  // namespace xfm::audit
