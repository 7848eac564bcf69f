// The combining step of a split (env8): the parts of V columns at a time, for a range of h.
#pragma once

#include "dct4/stage_columns.h"

namespace xfm::dct4 {
namespace {

// Rows of the two sections of the table for one h, a cosine and a sine an entry. The shortest step has one complex DFT and
// one section; d' = 4e has DFTs of e and of 4, and a section before each.
template <class P, int radix>
struct Sections {
  static constexpr bool one = radix == 8;
  static constexpr ptrdiff_t inner = 2 * ((one ? radix : radix / 4) - 1);
  static constexpr ptrdiff_t outer = one ? 0 : 2 * 3 * (radix / 4);
  static constexpr bool outer_first = radix == kLastRadix && P::kOuterSectionFirst;
};

// From the buffer: radix/2 bins upward, as many downward.
template <int radix, bool past, class Real>
[[gnu::always_inline]] inline void copy_bins(Real* rising, Real* falling, ptrdiff_t stride, ptrdiff_t step,
                                             const Real* rows) {
  for (ptrdiff_t f = 0; f < radix; ++f) {
    Real* const bin = f < radix / 2 ? rising + f * step : falling + (f - radix / 2) * step;
    copy_out<past>(bin, rows + 2 * f * kColumns, kColumns);
    copy_out<past>(bin + stride, rows + (2 * f + 1) * kColumns, kColumns);
  }
}

// Bins h + m2*f and m2*f - 1 - h of every column for a range of h. Those of f = 0 run upward from t, those of f = 1
// downward to t + half_step, and for every 2 more of f they lie 2*half_step further on.
template <class P, int radix, CombineKernel<typename P::Real>* kernel, class Real = typename P::Real>
[[gnu::always_inline]] inline XfmStatus combine_parts(const Env8* self, Real* t, const Real* w, ptrdiff_t stride,
                                                      ptrdiff_t half_step, const Range& bins) {
  using Section = Sections<P, radix>;
  constexpr ptrdiff_t V = kLanes<Real>;
  const Real* const table = static_cast<const Real*>(self->table);
  const ptrdiff_t chunks = self->chunks, step = 2 * half_step;
  const Real* inner = table + (Section::outer_first ? chunks * Section::outer * V : 0) + bins.first * Section::inner * V;
  const Real* outer = table + (Section::outer_first ? 0 : chunks * Section::inner * V) + bins.first * Section::outer * V;
  w += bins.first * 2 * radix * kColumns;
  Real* rising = t;
  Real* falling = t + half_step + 2 * stride * (bins.count - 1);
  alignas(kVectorBytes) Real rows[2 * radix * kColumns];
  const bool far = far_apart<Real>(step), buffered = kManyRows <= 2 * radix || far;
  const bool past = far && past_caches(t, 2 * bins.count * radix * stride);
  const ptrdiff_t near = buffered ? kColumns : stride, next = buffered ? 2 * kColumns : step;
  const ptrdiff_t fetched = is_fetched<Real>(2 * radix * kColumns * chunks) ? chunks - 1 - bins.first : 0;
  for (ptrdiff_t h = 0; h < bins.count; ++h) {
    Real* const up = buffered ? rows : rising;
    Real* const down = buffered ? rows + radix * kColumns : falling;
    for (ptrdiff_t b = 0; b < kColumns; b += V) {
      if (h < fetched) fetch(w + 2 * radix * (kColumns + b), 2 * radix * V);
      kernel(w + b, kColumns, inner, outer, up + b, down + b, near, next);
    }
    if (past)
      copy_bins<radix, true>(rising, falling, stride, step, rows);
    else if (buffered)
      copy_bins<radix, false>(rising, falling, stride, step, rows);
    w += 2 * radix * kColumns;
    inner += Section::inner * V;
    outer += Section::outer * V;
    rising += 2 * stride;
    falling -= 2 * stride;
  }
  return xfmStatusOk;
}

template <class P, class Real = typename P::Real>
[[gnu::always_inline]] inline XfmStatus combine(const Env8* self, Real* t, const Real* w, ptrdiff_t stride, ptrdiff_t half_step,
                                                const Range& bins) {
  using K = Kernels<P>;
  switch (self->rule) {
    case rule_of(8): return combine_parts<P, 8, K::combine8>(self, t, w, stride, half_step, bins);
    case rule_of(16): return combine_parts<P, 16, K::combine16>(self, t, w, stride, half_step, bins);
    case rule_of(32): return combine_parts<P, 32, K::combine32>(self, t, w, stride, half_step, bins);
    default: return kNoSuchRule;
  }
}

}  // namespace
}  // namespace xfm::dct4
