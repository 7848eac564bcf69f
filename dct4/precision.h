// What tells the two precisions of the DCT-IV apart; the sources that follow it in a unit are written once. The unit
// defines XFM_DCT4(name), the name of a class or method function, and XFM_DCT4_PUBLIC(name), that of a public one.
#pragma once

#include "dct4/objects.h"

namespace xfm::dct4 {

struct Single {
  using Real = float;
  using State = XfmDCT4State_32f;
  static constexpr int32_t kLanes = 8;        // of a 32-byte vector
  static constexpr int32_t kLastDirect = 64;  // the longest whole transform without a split
  static constexpr bool kCombine32SecondFirst = false;
  static Real cos_pi(Real x) { return xfmgCosPi_32f(x); }
  static Real sin_pi(Real x) { return xfmgSinPi_32f(x); }
};

struct Double {
  using Real = double;
  using State = XfmDCT4State_64f;
  static constexpr int32_t kLanes = 4;
  static constexpr int32_t kLastDirect = 32;
  static constexpr bool kCombine32SecondFirst = true;  // the order of the sections in env8's table for a radix of 32
  static Real cos_pi(Real x) { return xfmgCosPi_64f(x); }
  static Real sin_pi(Real x) { return xfmgSinPi_64f(x); }
};

constexpr int32_t kVectorBytes = 32;

// Sizes and products of lengths may leave 32 bits and are then meant to wrap.
inline int32_t wrapped(uint64_t x) { return static_cast<int32_t>(static_cast<uint32_t>(x)); }
inline int32_t product(int32_t a, int32_t b) { return wrapped(static_cast<uint64_t>(int64_t{a} * int64_t{b})); }
inline int32_t reflection(int32_t length) { return wrapped(2 * static_cast<uint64_t>(int64_t{length}) - 1); }

// The rule of a power of two: first for `from`, one more for each doubling up to `to`; `other` for all else.
inline int32_t power_rule(int32_t x, int32_t from, int32_t to, int32_t other) {
  int32_t rule = 1;
  for (int32_t power = from; power <= to; power *= 2, ++rule)
    if (x == power) return rule;
  return other;
}

constexpr int32_t kLastPartDirect = 64;  // the longest column that one kernel transforms
inline int32_t part_rule(int32_t length) { return power_rule(length, 2, kLastPartDirect, 7); }
constexpr int32_t kPartGeneral = 7;
inline int32_t synthesis_rule(int32_t radix) { return power_rule(radix, 1, 32, 0); }
inline int32_t combine_rule(int32_t radix) { return power_rule(radix, 2, 32, 0); }

template <class P>
constexpr int32_t kRootGeneral = P::kLastDirect == 64 ? 7 : 6;
template <class P>
int32_t root_rule(int32_t length) {
  return power_rule(length, 2, P::kLastDirect, kRootGeneral<P>);
}

template <class P>
uint64_t element_bytes(int32_t count) {
  return static_cast<uint64_t>(int64_t{count}) * sizeof(typename P::Real);
}

// Bytes of the tables.
inline uint64_t synthesis_table_bytes(int32_t rule, int32_t chunks) {
  return (uint64_t{1} << rule) * static_cast<uint64_t>(int64_t{chunks}) * kVectorBytes;
}
inline uint64_t combine_table_bytes(int32_t radix, int32_t chunks) {
  return static_cast<uint64_t>(int64_t{2 * radix - 2}) * static_cast<uint64_t>(int64_t{chunks}) * kVectorBytes;
}

}  // namespace xfm::dct4
