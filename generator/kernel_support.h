// What every generated unit includes: access to arrays of either alignment and the prologue's tests.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#define XFM_INLINE [[gnu::always_inline]] static inline
#define XFM_HIDDEN __attribute__((visibility("hidden")))
// A pool that the compiler must not look into: the scale 1.0 stays a multiplication, a constant stays a load.
#define XFM_POOL extern "C" __attribute__((weak, visibility("hidden")))

namespace {

struct Aligned {
  XFM_INLINE __m128 load4(const float* p) { return _mm_load_ps(p); }
  XFM_INLINE __m256 load8(const float* p) { return _mm256_load_ps(p); }
  XFM_INLINE __m128d load2(const double* p) { return _mm_load_pd(p); }
  XFM_INLINE __m256d load4(const double* p) { return _mm256_load_pd(p); }
  XFM_INLINE void store(float* p, __m128 v) { _mm_store_ps(p, v); }
  XFM_INLINE void store(float* p, __m256 v) { _mm256_store_ps(p, v); }
  XFM_INLINE void store(double* p, __m128d v) { _mm_store_pd(p, v); }
  XFM_INLINE void store(double* p, __m256d v) { _mm256_store_pd(p, v); }
#ifdef __AVX512F__
  XFM_INLINE __m512 load16(const float* p) { return _mm512_load_ps(p); }
  XFM_INLINE __m512d load8(const double* p) { return _mm512_load_pd(p); }
  XFM_INLINE void store(float* p, __m512 v) { _mm512_store_ps(p, v); }
  XFM_INLINE void store(double* p, __m512d v) { _mm512_store_pd(p, v); }
#endif
};

struct Unaligned {
  XFM_INLINE __m128 load4(const float* p) { return _mm_loadu_ps(p); }
  XFM_INLINE __m256 load8(const float* p) { return _mm256_loadu_ps(p); }
  XFM_INLINE __m128d load2(const double* p) { return _mm_loadu_pd(p); }
  XFM_INLINE __m256d load4(const double* p) { return _mm256_loadu_pd(p); }
  XFM_INLINE void store(float* p, __m128 v) { _mm_storeu_ps(p, v); }
  XFM_INLINE void store(float* p, __m256 v) { _mm256_storeu_ps(p, v); }
  XFM_INLINE void store(double* p, __m128d v) { _mm_storeu_pd(p, v); }
  XFM_INLINE void store(double* p, __m256d v) { _mm256_storeu_pd(p, v); }
#ifdef __AVX512F__
  XFM_INLINE __m512 load16(const float* p) { return _mm512_loadu_ps(p); }
  XFM_INLINE __m512d load8(const double* p) { return _mm512_loadu_pd(p); }
  XFM_INLINE void store(float* p, __m512 v) { _mm512_storeu_ps(p, v); }
  XFM_INLINE void store(double* p, __m512d v) { _mm512_storeu_pd(p, v); }
#endif
};

XFM_INLINE bool misaligned(const void* p, unsigned bytes) {
  return (reinterpret_cast<uintptr_t>(p) & (bytes - 1)) != 0;
}

}  // namespace
