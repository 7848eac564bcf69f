// The transforms by the sums that define them, in long double, for comparison with the library.
#pragma once

#include <string>
#include <vector>

namespace xfm::tool {

using Numbers = std::vector<long double>;

// How many numbers (components, where they are complex) a function of that family reads and writes at N points.
struct Extent {
  size_t in, out;
};
Extent extent(const std::string& family, size_t n);

// Unscaled: complex DFT, real DFT of any layout, Hartley, Walsh-Hadamard.
Numbers by_formula(const std::string& family, size_t n, const Numbers& in);

// Bin k of the unscaled DCT-IV.
template <class T>
long double dct4_bin(const T* in, size_t n, size_t k);

}  // namespace xfm::tool
