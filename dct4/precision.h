// What tells the two precisions of the DCT-IV apart, the rules by length, and the sizes of the tables. All headers of the
// DCT-IV are templates over a precision, Single or Double.
#pragma once

#include "dct4/objects.h"

namespace xfm::dct4 {

constexpr int32_t kVectorBytes = 32;
template <class Real>
constexpr int32_t kLanes = kVectorBytes / static_cast<int32_t>(sizeof(Real));  // V

struct Single {
  using Real = float;
  using State = XfmDCT4State_32f;
  static constexpr int32_t kLanes = dct4::kLanes<float>;
  static constexpr int32_t kLastDirect = 64;  // the longest whole transform without a split
  static constexpr bool kOuterSectionFirst = false;
  static Real cos_pi(Real x) { return xfmgCosPi_32f(x); }
  static Real sin_pi(Real x) { return xfmgSinPi_32f(x); }
};

struct Double {
  using Real = double;
  using State = XfmDCT4State_64f;
  static constexpr int32_t kLanes = dct4::kLanes<double>;
  static constexpr int32_t kLastDirect = 32;
  static constexpr bool kOuterSectionFirst = true;  // in the table of the longest combining step; interface, too
  static Real cos_pi(Real x) { return xfmgCosPi_64f(x); }
  static Real sin_pi(Real x) { return xfmgSinPi_64f(x); }
};


// Sizes and products of lengths may leave 32 bits and are then meant to wrap.
constexpr int32_t wrapped(uint64_t x) { return static_cast<int32_t>(static_cast<uint32_t>(x)); }
inline int32_t product(int32_t a, int32_t b) { return wrapped(static_cast<uint64_t>(int64_t{a} * int64_t{b})); }
inline int32_t reflection(int32_t length) { return wrapped(2 * static_cast<uint64_t>(int64_t{length}) - 1); }

// Rules. That of a kernel is the logarithm of its length: of a whole transform (env1), of a column (env5, env9), of a group
// of 2d (env4), of the DFTs of a combining step (env8). The next one after the longest kernel stands for all lengths that
// are split. Objects without a choice have kNoRule until their plan has passed, then kPlanned.
constexpr int32_t kNoRule = 0, kPlanned = 1;

constexpr int32_t rule_of(int32_t length) {
  int32_t rule = 0;
  for (; length > 1; length /= 2) ++rule;
  return rule;
}
// That of a power of two from 2 to `last`, `other` for all else.
constexpr int32_t direct_rule(int32_t x, int32_t last, int32_t other) {
  return x >= 2 && x <= last && (x & (x - 1)) == 0 ? rule_of(x) : other;
}

constexpr int32_t kLastPartDirect = 64;  // the longest column that one kernel transforms
constexpr int32_t kLastRadix = 32;
constexpr int32_t kPartGeneral = rule_of(kLastPartDirect) + 1;
template <class P>
constexpr int32_t kRootGeneral = rule_of(P::kLastDirect) + 1;

constexpr int32_t part_rule(int32_t length) { return direct_rule(length, kLastPartDirect, kPartGeneral); }
constexpr int32_t synthesis_rule(int32_t radix) { return direct_rule(wrapped(2 * int64_t{radix}), 2 * kLastRadix, kNoRule); }
constexpr int32_t combine_rule(int32_t radix) { return direct_rule(radix, kLastRadix, kNoRule); }
template <class P>
constexpr int32_t root_rule(int32_t length) {
  return direct_rule(length, P::kLastDirect, kRootGeneral<P>);
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
