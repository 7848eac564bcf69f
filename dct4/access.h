// How the stage kernels of a unit reach memory: scratch and tables by aligned vectors; src and dst, which may have any
// alignment, by V elements upward or downward. No move crosses the 128-bit halves of a register but the joining of two
// halves, and their parting on a downward store; four doubles are turned round by one operation where there is one (of floats
// it would want a register for its pattern and gains nothing).
#pragma once

#include <stddef.h>

#include "dct4/precision.h"
#include "generator/kernel_support.h"

namespace xfm::dct4 {
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

// Where V columns find their samples D[t]: at up + step*t for t >= 0, downward from the vector at down - step*t for
// t < 0, and the last one downward from the vector at end.
template <class Real>
struct Columns {
  const Real* x;
  ptrdiff_t up, down, end;
  [[gnu::always_inline]] Upward<const Real> rising() const { return {x + up}; }
  [[gnu::always_inline]] Downward<const Real> falling() const { return {x, down}; }
  [[gnu::always_inline]] Downward<const Real> last() const { return {x, end}; }
};

// The columns start .. start+V-1 of the folded source. The source is continued by reflection at both ends: position -1-k
// stands for k, and position n+k for n-1-k. With mirror = 2n-1-2*start the last sample is read at (mirror+1)/2 - V.
template <class Real>
[[gnu::always_inline]] inline Columns<Real> source_columns(const Real* src, ptrdiff_t start, ptrdiff_t mirror) {
  return {src, start, -start - kLanes<Real>, (mirror + 1) / 2 - kLanes<Real>};
}

// A distance of which the compiler knows nothing. What it would work out of it ahead of a loop of few turns, the places of all
// rows, only waits in memory until its turn comes.
[[gnu::always_inline]] inline ptrdiff_t opaque(ptrdiff_t distance) {
  asm("" : "+r"(distance));
  return distance;
}

// V elements into a buffer, which is aligned, and out of it.
[[gnu::always_inline]] inline void move_in(float* to, const float* from) { _mm256_store_ps(to, _mm256_loadu_ps(from)); }
[[gnu::always_inline]] inline void move_in(double* to, const double* from) { _mm256_store_pd(to, _mm256_loadu_pd(from)); }
[[gnu::always_inline]] inline void move_out(float* to, const float* from) { _mm256_storeu_ps(to, _mm256_load_ps(from)); }
[[gnu::always_inline]] inline void move_out(double* to, const double* from) { _mm256_storeu_pd(to, _mm256_load_pd(from)); }

// The same past the caches, to a whole line.
[[gnu::always_inline]] inline void move_past(float* to, const float* from) { _mm256_stream_ps(to, _mm256_load_ps(from)); }
[[gnu::always_inline]] inline void move_past(double* to, const double* from) { _mm256_stream_pd(to, _mm256_load_pd(from)); }

// Asks for the lines of an array that will be read soon. They come into the second cache while kernels compute; into the
// first they would come too early, and a core has few places for lines on their way there.
template <class Real>
[[gnu::always_inline]] inline void fetch(const Real* from, ptrdiff_t elements) {
  constexpr ptrdiff_t kLine = 64 / sizeof(Real);
  for (ptrdiff_t k = 0; k < elements; k += kLine) _mm_prefetch(from + k, _MM_HINT_T1);
}

// Whole rows, a multiple of V long, into a buffer and out of it.
template <class Real>
[[gnu::always_inline]] inline void copy_in(Real* row, const Real* src, ptrdiff_t elements) {
  for (ptrdiff_t k = 0; k < elements; k += kLanes<Real>) move_in(row + k, src + k);
}
template <bool past = false, class Real>
[[gnu::always_inline]] inline void copy_out(Real* dst, const Real* row, ptrdiff_t elements) {
  for (ptrdiff_t k = 0; k < elements; k += kLanes<Real>) past ? move_past(dst + k, row + k) : move_out(dst + k, row + k);
}

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
#ifdef __AVX2__
    return _mm256_permute4x64_pd(_mm256_loadu_pd(p), 0x1B);
#else
    return _mm256_permute_pd(_mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(p + 2)), _mm_loadu_pd(p), 1), 0x5);
#endif
  }
  XFM_INLINE void store(double* p, __m256d v) { _mm256_store_pd(p, v); }
  XFM_INLINE void store(Upward<double> y, __m256d v) { _mm256_storeu_pd(y.p, v); }
  XFM_INLINE void store(Downward<double> y, __m256d v) {
    double* p = y.lowest();
#ifdef __AVX2__
    _mm256_storeu_pd(p, _mm256_permute4x64_pd(v, 0x1B));
#else
    const __m256d turned = _mm256_permute_pd(v, 0x5);
    _mm_storeu_pd(p, _mm256_extractf128_pd(turned, 1));
    _mm_storeu_pd(p + 2, _mm256_castpd256_pd128(turned));
#endif
  }
};

}  // namespace
}  // namespace xfm::dct4
