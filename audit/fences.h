// Streaming stores that no fence follows, found function by function and then over the calls of the whole library.
#pragma once

#include "rules.h"

namespace xfm::audit {

// What stands in a function with no fence behind it.
struct Unfenced {
  bool stores = false;            // streaming stores of its own
  std::set<std::string> callees;  // functions called or jumped to
};

[[nodiscard]] Unfenced unfenced_in(const Body& body, const Surroundings& around);
// An exported function returns with all its streaming stores in place.
void check_fences(const std::map<std::string, Unfenced>& functions, Findings& findings);

}  // namespace xfm::audit
