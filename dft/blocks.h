// Plans over complex data: the data's own values, or vectors of them.
#pragma once

#include <vector>

#include "flows/half_spectrum.h"

namespace xfm::dft {

// A whole plan as two half spectra, of the real and of the imaginary parts of the data.
std::vector<Ref> half_spectrum_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign);

// Complex bins between the stages; primes as two half spectra, or by Rader's method on complex data.
std::vector<Ref> complex_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign);

}  // namespace xfm::dft
