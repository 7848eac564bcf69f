// The stages by themselves: what they know and are told beyond their objects, and their functions by element type. The tests
// and the benchmark of the stages call them, too.
#pragma once

#include <stddef.h>

#include "dct4/objects.h"

namespace xfm::dct4 {

// Every length with a split of columns (4096 and up) has so many of them, side by side in each row.
constexpr ptrdiff_t kColumns = 32;

// Part of a stage's loop: values of h, or vectors of groups.
struct Range {
  ptrdiff_t first, count;
  ptrdiff_t after = -1;  // where the next part begins if its table is to be fetched meanwhile
};

extern "C" {
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env4_compute(const Env4* self, float* dst, const float* t, const Range& groups);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env5_compute(const Env5* self, float* t, const float* src);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env7_compute(const Env7* self, float* t, const float* src, ptrdiff_t start,
                                                 ptrdiff_t mirror, ptrdiff_t stride);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env8_compute(const Env8* self, float* t, const float* w, ptrdiff_t stride,
                                                 ptrdiff_t half_step, const Range& bins);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env9_compute(const Env9* self, float* w, const float* src, ptrdiff_t start,
                                                 ptrdiff_t mirror);
XFM_INTERNAL XfmStatus owngDCT4_32fg9_env9_direct_compute(const Env9* self, float* w, const float* src,
                                                        ptrdiff_t start, ptrdiff_t mirror);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env4_compute(const Env4* self, double* dst, const double* t, const Range& groups);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env5_compute(const Env5* self, double* t, const double* src);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env7_compute(const Env7* self, double* t, const double* src, ptrdiff_t start,
                                                 ptrdiff_t mirror, ptrdiff_t stride);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env8_compute(const Env8* self, double* t, const double* w, ptrdiff_t stride,
                                                 ptrdiff_t half_step, const Range& bins);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env9_compute(const Env9* self, double* w, const double* src, ptrdiff_t start,
                                                 ptrdiff_t mirror);
XFM_INTERNAL XfmStatus owngDCT4_64fg9_env9_direct_compute(const Env9* self, double* w, const double* src,
                                                        ptrdiff_t start, ptrdiff_t mirror);
}

template <class Real>
struct StageFunctions;
template <>
struct StageFunctions<float> {
  static constexpr auto env4_compute = owngDCT4_32fg9_env4_compute;
  static constexpr auto env5_compute = owngDCT4_32fg9_env5_compute;
  static constexpr auto env7_compute = owngDCT4_32fg9_env7_compute;
  static constexpr auto env8_compute = owngDCT4_32fg9_env8_compute;
  static constexpr auto env9_compute = owngDCT4_32fg9_env9_compute;
  static constexpr auto env9_direct_compute = owngDCT4_32fg9_env9_direct_compute;
};
template <>
struct StageFunctions<double> {
  static constexpr auto env4_compute = owngDCT4_64fg9_env4_compute;
  static constexpr auto env5_compute = owngDCT4_64fg9_env5_compute;
  static constexpr auto env7_compute = owngDCT4_64fg9_env7_compute;
  static constexpr auto env8_compute = owngDCT4_64fg9_env8_compute;
  static constexpr auto env9_compute = owngDCT4_64fg9_env9_compute;
  static constexpr auto env9_direct_compute = owngDCT4_64fg9_env9_direct_compute;
};

}  // namespace xfm::dct4
