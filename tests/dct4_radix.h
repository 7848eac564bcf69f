// The radix by which a length is split, as a rule of its own for the models of plans: 2 to 32, the larger the length the
// larger; 0 where there is none.
#pragma once

#include <cstdint>

inline int64_t radix_of(int64_t x) {
  const int64_t most = x >= 512 ? 32 : x >= 128 ? 16 : x >= 32 ? 8 : x >= 16 ? 4 : x >= 4 ? 2 : 0;
  for (int64_t r = most; r >= 2; r /= 2)
    if (x % r == 0) return r;
  return 0;
}
