// The passes of one kernel: what each reads, transforms and writes, how often, and the text of the loops around them.
//
//   one pass       src -> dst
//   two passes     blocks of src -> main region; columns of it -> dst
//   three passes   for each chunk: blocks of src -> staging region, columns of it -> main region; columns of that -> dst
//
// So src is read once, dst written once, each at the same places, and the staging region keeps the first two passes of a
// chunk in the first-level cache.
#pragma once

#include "wht/plan.h"

namespace xfm::wht {

struct Pass {
  Program program;
  int runs = 1;  // in one call
};

std::vector<Pass> passes_of(const Plan& plan);

// Counts of one call. A plan that states other additions or multiplications, or fewer shuffles, is bad input.
Counts check_counts(const Plan& plan, const std::vector<Pass>& passes);

// Statements over x, y, scale and buffer that run all passes; a null buffer is replaced by a block of its own. `pool` names
// the constants of the first pass, the only one that has any.
std::vector<std::string> pass_statements(const Plan& plan, const std::vector<Pass>& passes, const std::string& pool);

}  // namespace xfm::wht
