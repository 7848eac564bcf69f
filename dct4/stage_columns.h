// Transforms of columns, V at a time: those of a whole column (env5) and of its decimated parts (env9).
#pragma once

#include "dct4/entries.h"
#include "dct4/kernel_set.h"
#include "dct4/limits.h"
#include "dct4/stages.h"

namespace xfm::dct4 {
namespace {

constexpr XfmStatus kNoSuchRule = -5;  // no planned state has one

// As by EnvList_get, without a call.
template <class Env>
const Env* first_of(const EnvList* stage) {
  return static_cast<const Env*>(stage->item);
}

// A kernel that is used with one number of columns only is given it.
template <class Real, ForwardKernel<Real>* kernel, ptrdiff_t columns = 0>
[[gnu::always_inline]] inline XfmStatus transform_whole(const Env5* self, Real* t, const Real* src) {
  constexpr ptrdiff_t V = kLanes<Real>;
  const ptrdiff_t step = columns ? 2 * columns : self->span, stride = columns ? columns : self->radix;
  const auto distance = [](ptrdiff_t rows) { return columns ? rows : opaque(rows); };
  for (ptrdiff_t i = 0; i < self->vecRadix; ++i)
    kernel(source_columns(src, V * i, self->wrap - 2 * V * i), distance(step), t + V * i, distance(stride));
  return xfmStatusOk;
}

template <class P, class Real = typename P::Real>
[[gnu::always_inline]] inline XfmStatus transform_columns(const Env5* self, Real* t, const Real* src) {
  using K = Kernels<P>;
  switch (self->rule) {
    case rule_of(8): return transform_whole<Real, K::forward8>(self, t, src);
    case rule_of(16): return transform_whole<Real, K::forward16>(self, t, src);
    case rule_of(32): return transform_whole<Real, K::forward32>(self, t, src);
    case rule_of(64): return transform_whole<Real, K::forward64, kColumns>(self, t, src);
    case kPartGeneral: break;
    default: return kNoSuchRule;
  }
  Entries<P>::env7_compute(first_of<Env7>(self->stageOne), t, src, 0, self->wrap, kColumns);
  return xfmStatusOk;
}

// Row k of the samples of one decimated sequence, all columns: rising t, falling t, the last one.
template <int length, class Real>
[[gnu::always_inline]] inline const Real* sample_row(const Columns<Real>& x, ptrdiff_t step, ptrdiff_t k) {
  constexpr ptrdiff_t wider = kColumns - kLanes<Real>;  // the reflected columns of a row lie below those of its first vector
  if (k < length / 2) return x.x + x.up + k * step;
  return x.x - wider + (k < length - 1 ? x.down + (k - length / 2 + 1) * step : x.end);
}

template <int length, class Real>
[[gnu::always_inline]] inline void fetch_samples(const Columns<Real>& x, ptrdiff_t step) {
  for (ptrdiff_t k = 0; k < length; ++k) fetch(sample_row<length>(x, step, k), kColumns);
}

// Sequence r, bin h: the real part in row 2d'h + r of w, the imaginary part in row 2d'h + d' + r.
template <int length, class Real, ForwardKernel<Real>* kernel>
[[gnu::always_inline]] inline XfmStatus transform_decimated(const Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                                            ptrdiff_t mirror) {
  constexpr ptrdiff_t V = kLanes<Real>;
  const ptrdiff_t shift = self->outerSpan, step = self->span, stride = self->radix * kColumns;
  alignas(kVectorBytes) Real rows[length * kColumns], bins[length * kColumns];
  const bool buffered = far_apart<Real>(step);
  const bool bins_buffered = kManyRows <= length || bytes_of<Real>(stride) >= kFarApartBins;
  const ptrdiff_t fetched = buffered && is_fetched<Real>(self->outerLength) ? self->radix - 1 : 0;
  for (ptrdiff_t r = 0; r < self->radix; ++r, w += kColumns, start += shift, mirror -= 2 * shift) {
    if (buffered) {
      const Columns<Real> x = source_columns(src, start, mirror);
      for (ptrdiff_t k = 0; k < length; ++k) copy_in(rows + k * kColumns, sample_row<length>(x, step, k), kColumns);
    }
    if (r < fetched) fetch_samples<length>(source_columns(src, start + shift, mirror - 2 * shift), step);
    Real* const y = bins_buffered ? bins : w;
    for (ptrdiff_t b = 0; b < kColumns; b += V) {
      const ptrdiff_t reflected = kColumns - V - b;
      const Columns<Real> copied = {rows, b, (length / 2 - 1) * kColumns + reflected, (length - 1) * kColumns + reflected};
      kernel(buffered ? copied : source_columns(src, start + b, mirror - 2 * b), buffered ? kColumns : step, y + b,
             bins_buffered ? kColumns : stride);
    }
    for (ptrdiff_t k = 0; bins_buffered && k < length; ++k) copy_out(w + k * stride, bins + k * kColumns, kColumns);
  }
  return xfmStatusOk;
}

template <class P, class Real = typename P::Real>
[[gnu::always_inline]] inline XfmStatus transform_parts_directly(const Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                                                 ptrdiff_t mirror) {
  using K = Kernels<P>;
  switch (self->rule) {
    case rule_of(16): return transform_decimated<16, Real, K::forward16>(self, w, src, start, mirror);
    case rule_of(32): return transform_decimated<32, Real, K::forward32>(self, w, src, start, mirror);
    case rule_of(64): return transform_decimated<64, Real, K::forward64>(self, w, src, start, mirror);
    default: return kNoSuchRule;
  }
}

// The buffers stand in a function of their own, so that levels above one another have them on the stack once.
template <class P, class Real = typename P::Real>
[[gnu::always_inline]] inline XfmStatus transform_parts(const Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                                        ptrdiff_t mirror) {
  if (self->rule != kPartGeneral) return Entries<P>::env9_direct_compute(self, w, src, start, mirror);
  const Env7* const split = first_of<Env7>(self->stageOne);
  const ptrdiff_t shift = self->outerSpan;
  for (ptrdiff_t r = 0; r < self->radix; ++r)
    Entries<P>::env7_compute(split, w + r * kColumns, src, start + r * shift, mirror - 2 * r * shift, self->radix * kColumns);
  return xfmStatusOk;
}

}  // namespace
}  // namespace xfm::dct4
