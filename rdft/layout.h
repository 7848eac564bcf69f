// Where the values of a spectrum, listed R_0, R_1, I_1, ..., stand in a half-spectrum array.
#pragma once

#include <vector>

namespace xfm::rdft {

enum class Layout { Samples, Ccs, Pack, Perm };

// The position of the value with the given place in the list.
int position(Layout layout, int n, int place);
// Positions that hold +0.0: imaginary parts of bins that are real. A forward kernel writes them, an inverse one never
// looks at them.
std::vector<int> zero_positions(Layout layout, int n);

}  // namespace xfm::rdft
