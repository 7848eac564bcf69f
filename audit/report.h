#pragma once

#include "audit.h"

#include <ostream>

namespace xfm::audit {

// One row for every line of every body: what it is and what it holds.
void write_bodies(std::ostream& out, const std::vector<BodySummary>& bodies);

}  // namespace xfm::audit
