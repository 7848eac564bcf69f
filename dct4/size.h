// The size of a block: the plans once more, adding up charges in place of building. What one class costs is summed in 64
// bits, classes are added as signed 32-bit numbers, and a sum that has gone negative counts as a failure; one that has
// wrapped to a positive number does not. Every object's lists are charged for all their elements, though the first of a
// list lies in its head.
#pragma once

#include "dct4/precision.h"

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

}  // namespace
}  // namespace xfm::dct4

extern "C" {
XFM_INTERNAL int32_t XFM_DCT4(env5_mem)(int32_t cols, int32_t length, int32_t wrap, int32_t span, int32_t vecRadix,
                                        int32_t lengthAgain, int32_t radix);
XFM_INTERNAL int32_t XFM_DCT4(env9_mem)(int32_t cols, int32_t outerA, int32_t outerB, int32_t span, int32_t outerSpan,
                                        int32_t radix, int32_t outerLength, int32_t stride, int32_t outerStride);
}

namespace xfm::dct4 {
namespace {

// An env7 for a column of `m` and all below it; the outer values as its members hold them.
[[gnu::always_inline]] inline int32_t env7_size(int32_t m, int32_t a, int32_t b, int32_t span, int32_t length, int32_t stride) {
  int32_t d = 0;
  if (divisorsIntNonTriv(&d, m / 2) != xfmStatusOk) return kNoSize;
  const int32_t combine = env8_size(d, m / (2 * d));
  const int32_t part = XFM_DCT4(env9_mem)(m / d, a, b, product(d, span), span, d, length, product(d, stride), stride);
  if (combine < 0 || part < 0) return kNoSize;
  const uint64_t own = charge(sizeof(Env7)) + lists(3) + charge(element_bytes<Precision>(length));
  const uint64_t children = EnvList_add_mem(2) + charge(sizeof(Lambda<Real>)) + EnvList_add_mem(1) + EnvList_add_mem(2);
  return sum_of(combine, static_cast<uint64_t>(part) + own + children);
}

template <class Env>
int32_t part_size(int32_t m, int32_t a, int32_t b, int32_t span, int32_t length, int32_t stride) {
  const uint64_t own = charge(sizeof(Env)) + lists(2);
  if (part_rule(m) != kPartGeneral) return wrapped(own);
  return sum_of(env7_size(m, a, b, span, length, stride), own + EnvList_add_mem(2));
}

inline int32_t env2_size(int32_t length, int32_t d) {
  const int32_t rows = length / (2 * d);
  if (rows % Precision::kLanes != 0) return kNoSize;
  const int32_t rule = synthesis_rule(d);
  if (rule == 0) return kNoSize;
  const uint64_t table = charge(synthesis_table_bytes(rule, rows / Precision::kLanes));
  const int32_t env4 = wrapped(charge(sizeof(Env4)) + lists(1) + table);
  const uint64_t children = EnvList_add_mem(2) + charge(sizeof(FSplit<Real>)) + EnvList_add_mem(1);
  return sum_of(env4, charge(sizeof(Env2)) + lists(2) + children);
}

inline int32_t env3_size(int32_t length, int32_t d) {
  if (d % Precision::kLanes != 0) return kNoSize;
  const int32_t part =
      XFM_DCT4(env5_mem)(length / d, length, reflection(length), 2 * d, d / Precision::kLanes, length, d);
  return sum_of(part, charge(sizeof(Env3)) + lists(2) + EnvList_add_mem(2));
}

// The whole block, or a negative number for a length that has no plan.
inline int32_t block_size(int32_t length) {
  const uint64_t own = 2 * charge(1) + charge(sizeof(Env1)) + lists(3);
  if (root_rule<Precision>(length) != kRootGeneral<Precision>) return wrapped(own);
  int32_t d = 0;
  if (divisorsIntNonTriv(&d, length / 2) != xfmStatusOk) return kNoSize;
  const int32_t env2 = env2_size(length, d);
  const int32_t env3 = env3_size(length, d);
  if (env2 < 0 || env3 < 0) return kNoSize;
  const uint64_t children = EnvList_add_mem(2) + charge(sizeof(FCompose<Real>)) + EnvList_add_mem(1) + EnvList_add_mem(2);
  return sum_of(env2, static_cast<uint64_t>(env3) + own + children + charge(element_bytes<Precision>(length)));
}

}  // namespace
}  // namespace xfm::dct4

extern "C" {

int32_t XFM_DCT4(env5_mem)(int32_t cols, int32_t length, int32_t, int32_t span, int32_t, int32_t lengthAgain, int32_t radix) {
  return xfm::dct4::part_size<xfm::dct4::Env5>(cols, lengthAgain, lengthAgain, span, length, radix);
}

int32_t XFM_DCT4(env9_mem)(int32_t cols, int32_t outerA, int32_t outerB, int32_t span, int32_t, int32_t, int32_t outerLength,
                           int32_t stride, int32_t) {
  return xfm::dct4::part_size<xfm::dct4::Env9>(cols, outerA, outerB, span, outerLength, stride);
}
}
