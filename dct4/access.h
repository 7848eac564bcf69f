// How the stage kernels of a unit reach memory: scratch and tables by aligned vectors; src and dst, which may have any
// alignment, by V elements upward or downward. No move crosses the 128-bit halves of a register but the joining of two
// halves, and their parting on a downward store.
#pragma once

#include "generator/kernel_support.h"

namespace {

// V elements upward from p.
template <class Element>
struct Upward {
  Element* p;
  [[gnu::always_inline]] Upward operator+(ptrdiff_t elements) const { return {p + elements}; }
};

// V elements downward; at is the offset of the lowest of them.
template <class Element>
struct Downward {
  Element* p;
  ptrdiff_t at;
  [[gnu::always_inline]] Downward operator+(ptrdiff_t elements) const { return {p, at + elements}; }
  [[gnu::always_inline]] Element* lowest() const { return p + at; }
};

using Rising = Upward<const Real>;
using Falling = Downward<const Real>;
using RisingOut = Upward<Real>;
using FallingOut = Downward<Real>;

// Where V columns find their samples: D[t] at start + step*t, reflected about the ends of src. `mirror` is 2n-1-2*start.
struct Columns {
  const Real* src;
  ptrdiff_t start, mirror;
  [[gnu::always_inline]] Rising rising() const { return {src + start}; }
  [[gnu::always_inline]] Falling falling() const { return {src, -start - Precision::kLanes}; }
  [[gnu::always_inline]] Falling last() const { return {src, (mirror + 1) / 2 - Precision::kLanes}; }
};

struct StageAccess {
  XFM_INLINE __m128 load4(const float* p) { return _mm_load_ps(p); }
  XFM_INLINE __m256 load8(const float* p) { return _mm256_load_ps(p); }
  XFM_INLINE __m256 load8(Upward<const float> x) { return _mm256_loadu_ps(x.p); }
  XFM_INLINE __m256 load8(Downward<const float> x) {
    const float* p = x.lowest();
    return _mm256_permute_ps(_mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p + 4)), _mm_loadu_ps(p), 1), 0x1B);
  }
  XFM_INLINE void store(float* p, __m256 v) { _mm256_store_ps(p, v); }
  XFM_INLINE void store(Upward<float> y, __m256 v) { _mm256_storeu_ps(y.p, v); }
  XFM_INLINE void store(Downward<float> y, __m256 v) {
    float* p = y.lowest();
    const __m256 turned = _mm256_permute_ps(v, 0x1B);
    _mm_storeu_ps(p, _mm256_extractf128_ps(turned, 1));
    _mm_storeu_ps(p + 4, _mm256_castps256_ps128(turned));
  }

  XFM_INLINE __m128d load2(const double* p) { return _mm_load_pd(p); }
  XFM_INLINE __m256d load4(const double* p) { return _mm256_load_pd(p); }
  XFM_INLINE __m256d load4(Upward<const double> x) { return _mm256_loadu_pd(x.p); }
  XFM_INLINE __m256d load4(Downward<const double> x) {
    const double* p = x.lowest();
    return _mm256_permute_pd(_mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(p + 2)), _mm_loadu_pd(p), 1), 0x5);
  }
  XFM_INLINE void store(double* p, __m256d v) { _mm256_store_pd(p, v); }
  XFM_INLINE void store(Upward<double> y, __m256d v) { _mm256_storeu_pd(y.p, v); }
  XFM_INLINE void store(Downward<double> y, __m256d v) {
    double* p = y.lowest();
    const __m256d turned = _mm256_permute_pd(v, 0x5);
    _mm_storeu_pd(p, _mm256_extractf128_pd(turned, 1));
    _mm_storeu_pd(p + 2, _mm256_castpd256_pd128(turned));
  }
};

}  // namespace
