// The order of columns that the table of env4 and the kernels that read it share.
#pragma once

#include <stdint.h>

namespace xfm::dct4 {

// The column of the p-th row pair for a radix d: columns come in the pairs a, d-1-a that a synthesis joins first; at
// d = 32 two pairs follow each other that its first step of four joins.
constexpr int32_t synthesis_column(int32_t d, int32_t p) {
  const int32_t c = p / 2;
  const int32_t a = d == 32 ? 16 * (c % 2) + 4 * (c / 2 % 4) + c / 8 : c;
  return p % 2 == 0 ? a : d - 1 - a;
}

}  // namespace xfm::dct4
