// A vector times a factor of its own in every lane, such that each lane has the products and sums that its value alone would
// have: what meets no product alone meets none here.
#pragma once

#include <optional>
#include <vector>

#include "flows/blocks.h"

namespace xfm::dft {

// By lane a vector that holds the product there; nothing where there is no factor.
std::vector<Ref> times_lanes(Graph& g, Ref a, const std::vector<std::optional<ComplexNumber>>& factors);

}  // namespace xfm::dft
