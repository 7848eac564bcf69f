#include "bench/wht_loop.h"

#include <immintrin.h>

// Compiled for AVX: nothing of the standard library may come into being here, for it could be taken for the whole program.
namespace xfm::bench {

namespace {

struct Single {
  using Element = float;
  using Register = __m256;
  static constexpr int kLanes = 8, kLaneOrder = 3;
  static Register load(const float* p) { return _mm256_load_ps(p); }
  static void store(float* p, Register v) { _mm256_store_ps(p, v); }
  static Register all(float x) { return _mm256_set1_ps(x); }

  // Every level within the register: partners exchanged, plus the register with its second partners negated.
  static Register inner_levels(Register v) {
    const float m = -0.0f;
    v = _mm256_permute_ps(v, 0xB1) + _mm256_xor_ps(v, _mm256_setr_ps(0, m, 0, m, 0, m, 0, m));
    v = _mm256_permute_ps(v, 0x4E) + _mm256_xor_ps(v, _mm256_setr_ps(0, 0, m, m, 0, 0, m, m));
    return _mm256_permute2f128_ps(v, v, 1) + _mm256_xor_ps(v, _mm256_setr_ps(0, 0, 0, 0, m, m, m, m));
  }
};

struct Double {
  using Element = double;
  using Register = __m256d;
  static constexpr int kLanes = 4, kLaneOrder = 2;
  static Register load(const double* p) { return _mm256_load_pd(p); }
  static void store(double* p, Register v) { _mm256_store_pd(p, v); }
  static Register all(double x) { return _mm256_set1_pd(x); }

  static Register inner_levels(Register v) {
    const double m = -0.0;
    v = _mm256_permute_pd(v, 0x5) + _mm256_xor_pd(v, _mm256_setr_pd(0, m, 0, m));
    return _mm256_permute2f128_pd(v, v, 1) + _mm256_xor_pd(v, _mm256_setr_pd(0, 0, m, m));
  }
};

template <class V, int kCount>
[[gnu::always_inline]] inline void butterflies(typename V::Register (&v)[kCount]) {
#pragma GCC unroll 3
  for (int distance = 1; distance < kCount; distance *= 2)
#pragma GCC unroll 8
    for (int i = 0; i < kCount; ++i)
      if (!(i & distance)) {
        const auto a = v[i], b = v[i + distance];
        v[i] = a + b;
        v[i + distance] = a - b;
      }
}

// kCount registers at a stride, through all levels between them; contiguous ones through the levels inside as well.
template <class V, int kCount, bool kInner>
[[gnu::always_inline]] inline void step(const typename V::Element* src, typename V::Element* dst, int stride,
                                        typename V::Register scale) {
  typename V::Register v[kCount];
#pragma GCC unroll 8
  for (int i = 0; i < kCount; ++i) v[i] = kInner ? V::inner_levels(V::load(src + i * stride)) : V::load(src + i * stride);
  butterflies<V>(v);
#pragma GCC unroll 8
  for (int i = 0; i < kCount; ++i) V::store(dst + i * stride, v[i] * scale);
}

template <class V, int kCount>
void block_pass(const typename V::Element* src, typename V::Element* dst, int length, typename V::Element scale) {
  const auto s = V::all(scale);
  for (int i = 0; i < length; i += kCount * V::kLanes) step<V, kCount, true>(src + i, dst + i, V::kLanes, s);
}

template <class V, int kCount>
void column_pass(typename V::Element* data, int length, int stride, typename V::Element scale) {
  const auto s = V::all(scale);
  for (int first = 0; first < length; first += kCount * stride)
    for (int i = first; i < first + stride; i += V::kLanes) step<V, kCount, false>(data + i, data + i, stride, s);
}

template <class T>
void scalar_loop(const T* src, T* dst, int length, T scale) {
  for (int i = 0; i < length; ++i) dst[i] = src[i];
  for (int distance = 1; distance < length; distance *= 2)
    for (int i = 0; i < length; ++i)
      if (!(i & distance)) {
        const T a = dst[i], b = dst[i + distance];
        dst[i] = a + b;
        dst[i + distance] = a - b;
      }
  for (int i = 0; i < length; ++i) dst[i] *= scale;
}

template <class V>
void loop(const typename V::Element* src, typename V::Element* dst, int order, typename V::Element scale) {
  const int length = 1 << order;
  if (order < V::kLaneOrder) return scalar_loop(src, dst, length, scale);
  const int block_order = order < V::kLaneOrder + 3 ? order : V::kLaneOrder + 3;
  const auto block_scale = block_order == order ? scale : 1;  // the product by 1 costs nothing beside the stores
  switch (block_order - V::kLaneOrder) {
    case 0: block_pass<V, 1>(src, dst, length, block_scale); break;
    case 1: block_pass<V, 2>(src, dst, length, block_scale); break;
    case 2: block_pass<V, 4>(src, dst, length, block_scale); break;
    default: block_pass<V, 8>(src, dst, length, block_scale); break;
  }
  for (int done = block_order; done < order;) {
    const int radix_order = order - done < 3 ? order - done : 3;
    const auto pass_scale = done + radix_order == order ? scale : 1;
    if (radix_order == 1) column_pass<V, 2>(dst, length, 1 << done, pass_scale);
    if (radix_order == 2) column_pass<V, 4>(dst, length, 1 << done, pass_scale);
    if (radix_order == 3) column_pass<V, 8>(dst, length, 1 << done, pass_scale);
    done += radix_order;
  }
}

}  // namespace

void loop_hadamard(const float* src, float* dst, int order, float scale) { loop<Single>(src, dst, order, scale); }
void loop_hadamard(const double* src, double* dst, int order, double scale) { loop<Double>(src, dst, order, scale); }

}  // namespace xfm::bench
