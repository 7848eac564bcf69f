// The size of a block: the plans once more, adding up charges in place of building. What one class costs is summed in 64
// bits; classes are added as signed 32-bit numbers. A sum that has become negative counts as a failure; one that has
// wrapped around to a positive number passes. Every list is charged for all its elements, though the first of them lies
// in its head.
#pragma once

#include "dct4/entries.h"

namespace xfm::dct4 {
namespace {

constexpr int32_t kNoSize = xfmStatusSizeError;  // any negative number

inline uint64_t charge(uint64_t bytes) { return xfmgAlignSize32Bytes(bytes); }
inline uint64_t lists(uint64_t count) { return count * charge(sizeof(EnvList)); }

inline int32_t env8_size(int32_t radix, int32_t chunks) {
  if (combine_rule(radix) == 0) return kNoSize;
  return wrapped(charge(sizeof(Env8)) + lists(1) + charge(combine_table_bytes(radix, chunks)));
}

inline int32_t sum_of(int32_t part, uint64_t rest) { return part < 0 ? kNoSize : wrapped(static_cast<uint64_t>(part) + rest); }

// An env7 for a column of `m` and all below it; the outer values as its members hold them.
template <class P>
[[gnu::always_inline]] inline int32_t env7_size(int32_t m, int32_t a, int32_t b, int32_t span, int32_t length, int32_t stride) {
  int32_t d = 0;
  if (divisorsIntNonTriv(&d, m / 2) != xfmStatusOk) return kNoSize;
  const int32_t combine = env8_size(d, m / (2 * d));
  const int32_t part = Entries<P>::env9_mem(m / d, a, b, product(d, span), span, d, length, product(d, stride), stride);
  if (combine < 0 || part < 0) return kNoSize;
  const uint64_t own = charge(sizeof(Env7)) + lists(3) + charge(element_bytes<P>(length));
  const uint64_t function = charge(sizeof(Lambda<typename P::Real>));
  const uint64_t children = EnvList_add_mem(2) + function + EnvList_add_mem(1) + EnvList_add_mem(2);
  return sum_of(combine, static_cast<uint64_t>(part) + own + children);
}

template <class P, class Env>
int32_t part_size(int32_t m, int32_t a, int32_t b, int32_t span, int32_t length, int32_t stride) {
  const uint64_t own = charge(sizeof(Env)) + lists(2);
  if (part_rule(m) != kPartGeneral) return wrapped(own);
  return sum_of(env7_size<P>(m, a, b, span, length, stride), own + EnvList_add_mem(2));
}

template <class P>
int32_t env2_size(int32_t length, int32_t d) {
  const int32_t rows = length / (2 * d);
  if (rows % P::kLanes != 0) return kNoSize;
  const int32_t rule = synthesis_rule(d);
  if (rule == 0) return kNoSize;
  const uint64_t table = charge(synthesis_table_bytes(rule, rows / P::kLanes));
  const int32_t env4 = wrapped(charge(sizeof(Env4)) + lists(1) + table);
  const uint64_t children = EnvList_add_mem(2) + charge(sizeof(FSplit<typename P::Real>)) + EnvList_add_mem(1);
  return sum_of(env4, charge(sizeof(Env2)) + lists(2) + children);
}

template <class P>
int32_t env3_size(int32_t length, int32_t d) {
  if (d % P::kLanes != 0) return kNoSize;
  const int32_t part =
      Entries<P>::env5_mem(length / d, length, reflection(length), 2 * d, d / P::kLanes, length, d);
  return sum_of(part, charge(sizeof(Env3)) + lists(2) + EnvList_add_mem(2));
}

// The whole block, or a negative number for a length that has no plan.
template <class P>
int32_t block_size(int32_t length) {
  const uint64_t own = 2 * charge(1) + charge(sizeof(Env1)) + lists(3);
  if (root_rule<P>(length) != kRootGeneral<P>) return wrapped(own);
  int32_t d = 0;
  if (divisorsIntNonTriv(&d, length / 2) != xfmStatusOk) return kNoSize;
  const int32_t env2 = env2_size<P>(length, d);
  const int32_t env3 = env3_size<P>(length, d);
  if (env2 < 0 || env3 < 0) return kNoSize;
  const uint64_t function = charge(sizeof(FCompose<typename P::Real>));
  const uint64_t children = EnvList_add_mem(2) + function + EnvList_add_mem(1) + EnvList_add_mem(2);
  return sum_of(env2, static_cast<uint64_t>(env3) + own + children + charge(element_bytes<P>(length)));
}

}  // namespace
}  // namespace xfm::dct4
