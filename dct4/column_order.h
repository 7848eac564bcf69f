// The order of columns that the table of env4 and the kernels that read it share.
#pragma once

#include <stdint.h>

namespace xfm::dct4 {

// From so many columns on a synthesis splits by four first, below by two.
constexpr int32_t kJoinsFourFrom = 32;

// The column of the p-th row pair for a radix d. Columns come in the pairs a, d-1-a that a synthesis joins first. Where it
// joins four, two pairs follow each other, h and 16+h: h runs 0, 4, 8, 12, 1, 5 and so on.
constexpr int32_t synthesis_column(int32_t d, int32_t p) {
  const int32_t c = p / 2;
  const int32_t a = d >= kJoinsFourFrom ? 16 * (c % 2) + 4 * (c / 2 % 4) + c / 8 : c;
  return p % 2 == 0 ? a : d - 1 - a;
}

}  // namespace xfm::dct4
