// What the units of the Walsh-Hadamard kernels include beside the prologue's tests: the allocator behind a null buffer,
// and passes that read one array and write another, of which only one may be misaligned.
#pragma once

#include "core/xfmcore.h"
#include "generator/kernel_support.h"

namespace {

template <class From, class To>
struct Through {
  XFM_INLINE __m128 load4(const float* p) { return From::load4(p); }
  XFM_INLINE __m128d load2(const double* p) { return From::load2(p); }
  XFM_INLINE void store(float* p, __m128 v) { To::store(p, v); }
  XFM_INLINE void store(double* p, __m128d v) { To::store(p, v); }
};

}  // namespace
