#pragma once

#include <ostream>

#include "audit.h"

namespace xfm::audit {

// One row for every line of every body: what it is and what it holds.
void write_bodies(std::ostream& out, const std::vector<BodySummary>& bodies);

// The rows of the generator's reports, one report after the other, each with the counts of its kernel's machine code
// (of the first line, for the others hold the same arithmetic) and its stack bytes behind it.
void write_joined(std::ostream& out, const std::vector<std::string>& reports, const std::vector<BodySummary>& bodies);

}  // namespace xfm::audit
