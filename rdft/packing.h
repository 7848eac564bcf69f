// The packed forms of the real and Hartley kernels: which group of kernels shares a recipe, how many lanes there may be,
// and where loads and stores are bound to pairs of cells.
#pragma once

#include <string>
#include <vector>

#include "generator/pack.h"
#include "rdft/flow.h"
#include "rdft/layout.h"

namespace xfm::rdft {

// The column Kernels of plans/pack_recipes.tsv.
std::string kernels_name(Family family);
pack::Grid grid(Layout source, Layout target, int n);

}  // namespace xfm::rdft
