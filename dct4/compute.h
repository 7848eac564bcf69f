// Transforming: the loops over the stage kernels.
//
// The length is n = d*m. Stage 1 (env5) folds src into d columns of m reals and transforms each, V columns at a time, into
// the root's scratch: row 2g holds the real parts of bin g of all columns, row 2g+1 the imaginary parts. Stage 2 (env4)
// twiddles and synthesises the groups, V at a time, from the scratch into dst. Columns that are too long are split by an
// env7: its env9 transforms d' decimated sequences into the env7's scratch, its env8 combines them. Of long transforms env8
// and env4 take turns, so that the root's scratch is read while a cache still holds it.
//
// Lengths are powers of two, so the rows that one kernel reads or writes fall on few sets of a cache, and each row is
// wider than the vector that one kernel takes of it. Three things keep the traffic at one visit a line: an env7 takes all
// columns of a row before it goes on; its scratch is used from the front with rows side by side, however far apart the
// rows of its result lie; and where rows are far apart they go through a small buffer, whole rows at a time.
#pragma once

#include <stddef.h>

#include "dct4/access.h"
#include "dct4/stages.h"

extern "C" {
XFM_INTERNAL XfmStatus XFM_DCT4(env4_compute)(const xfm::dct4::Env4* self, Real* dst, const Real* t,
                                              const xfm::dct4::Range& groups);
XFM_INTERNAL XfmStatus XFM_DCT4(env5_compute)(const xfm::dct4::Env5* self, Real* t, const Real* src);
XFM_INTERNAL XfmStatus XFM_DCT4(env7_compute)(const xfm::dct4::Env7* self, Real* t, const Real* src, ptrdiff_t start,
                                              ptrdiff_t mirror, ptrdiff_t stride);
XFM_INTERNAL XfmStatus XFM_DCT4(env8_compute)(const xfm::dct4::Env8* self, Real* t, const Real* w,
                                              ptrdiff_t stride, ptrdiff_t half_step, const xfm::dct4::Range& bins);
XFM_INTERNAL XfmStatus XFM_DCT4(env9_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                              ptrdiff_t mirror);
XFM_INTERNAL XfmStatus XFM_DCT4(env9_direct_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src,
                                                     ptrdiff_t start, ptrdiff_t mirror);
}

namespace xfm::dct4 {
namespace {

constexpr XfmStatus kNoSuchRule = -5;  // no planned state has one
constexpr ptrdiff_t V = Precision::kLanes;

// From these distances of rows on, in bytes, they go through a buffer; by measurement. Rows a multiple of 4096 bytes apart
// share the sets of the first cache, which hurts most where every row of a scratch is written by halves.
constexpr ptrdiff_t kFarApart = 16384, kFarApartBins = 4096, kSameSets = 4096;
// A kernel that writes so many rows always writes to the buffer: its addresses are constants then. Addresses worked out at
// run time take registers and issue slots and cost more than the copy.
constexpr ptrdiff_t kManyRows = 32;
inline ptrdiff_t bytes_of(ptrdiff_t elements) { return elements * static_cast<ptrdiff_t>(sizeof(Real)); }
inline bool far_apart(ptrdiff_t elements) {
  return bytes_of(elements) >= kFarApart && bytes_of(elements) % kSameSets == 0;
}

// From this size of the result on, stages 1 and 2 take turns; below, the second cache holds so much of all arrays that
// shorter runs gain nothing.
constexpr ptrdiff_t kTurns = 1 << 19;
// What is read from so large an array is fetched while kernels compute on what was read before; else the farther caches
// would be idle meanwhile.
constexpr ptrdiff_t kFetched = 1 << 19;
// Vectors of groups that stage 2 takes together: 128 bytes of a row. Where the stages take turns, stage 1 makes as many in each
// stretch of bins, 256 KB in all, so that the second cache still holds them.
constexpr ptrdiff_t kTogether = 4;

// From this size of an array on, its rows are written past the caches: they would push out what is still to be read
// before anybody reads them, and a line written whole need not be fetched first. Chosen by transforms whose result is
// read by the next one.
constexpr ptrdiff_t kPastCaches = 1 << 21;
inline bool past_caches(const Real* first_row, ptrdiff_t elements) {
  constexpr uintptr_t kLine = 64;
  return bytes_of(elements) >= kPastCaches && reinterpret_cast<uintptr_t>(first_row) % kLine == 0;
}

using ForwardKernel = void(const Columns&, ptrdiff_t, Real*, ptrdiff_t);
using CombineKernel = void(const Real*, ptrdiff_t, const Real*, const Real*, Real*, Real*, ptrdiff_t, ptrdiff_t);
using SynthesisKernel = void(const Real*, const Real*, const RisingOut&, const FallingOut&, ptrdiff_t);

template <class Env>
const Env* first_of(const EnvList* stage) {
  return static_cast<const Env*>(EnvList_get(stage, 0));
}

// A kernel that is used with one number of columns only is given it.
template <ForwardKernel kernel, ptrdiff_t columns = 0>
[[gnu::always_inline]] inline XfmStatus transform_columns(const Env5* self, Real* t, const Real* src) {
  const ptrdiff_t step = columns ? 2 * columns : self->span, stride = columns ? columns : self->radix;
  for (ptrdiff_t i = 0; i < self->vecRadix; ++i)
    kernel(source_columns(src, V * i, self->wrap - 2 * V * i), step, t + V * i, stride);
  return xfmStatusOk;
}

// Row k of the samples of one decimated sequence, all columns: rising t, falling t, the last one.
template <int length>
[[gnu::always_inline]] inline const Real* sample_row(const Columns& x, ptrdiff_t step, ptrdiff_t k) {
  constexpr ptrdiff_t wider = kColumns - V;  // the reflected columns of a row lie below those of its first vector
  if (k < length / 2) return x.x + x.up + k * step;
  return x.x - wider + (k < length - 1 ? x.down + (k - length / 2 + 1) * step : x.end);
}

template <int length>
[[gnu::always_inline]] inline void fetch_samples(const Columns& x, ptrdiff_t step) {
  for (ptrdiff_t k = 0; k < length; ++k) fetch(sample_row<length>(x, step, k), kColumns);
}

template <int length, ForwardKernel kernel>
[[gnu::always_inline]] inline XfmStatus transform_decimated(const Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                                            ptrdiff_t mirror) {
  const ptrdiff_t shift = self->outerSpan, step = self->span, stride = self->radix * kColumns;
  alignas(32) Real rows[length * kColumns], bins[length * kColumns];
  const bool buffered = far_apart(step), bins_buffered = kManyRows <= length || bytes_of(stride) >= kFarApartBins;
  const ptrdiff_t fetched = buffered && bytes_of(self->outerLength) >= kFetched ? self->radix - 1 : 0;
  for (ptrdiff_t r = 0; r < self->radix; ++r, w += kColumns, start += shift, mirror -= 2 * shift) {
    if (buffered) {
      const Columns x = source_columns(src, start, mirror);
      for (ptrdiff_t k = 0; k < length; ++k) copy_in(rows + k * kColumns, sample_row<length>(x, step, k), kColumns);
    }
    if (r < fetched) fetch_samples<length>(source_columns(src, start + shift, mirror - 2 * shift), step);
    Real* const y = bins_buffered ? bins : w;
    for (ptrdiff_t b = 0; b < kColumns; b += V) {
      const ptrdiff_t reflected = kColumns - V - b;
      const Columns copied = {rows, b, (length / 2 - 1) * kColumns + reflected, (length - 1) * kColumns + reflected};
      kernel(buffered ? copied : source_columns(src, start + b, mirror - 2 * b), buffered ? kColumns : step, y + b,
             bins_buffered ? kColumns : stride);
    }
    for (ptrdiff_t k = 0; bins_buffered && k < length; ++k) copy_out(w + k * stride, bins + k * kColumns, kColumns);
  }
  return xfmStatusOk;
}

// Rows of the inner and the outer section of the table for one h; radix 8 has but one section.
template <int radix>
struct Sections {
  static constexpr ptrdiff_t inner = radix == 8 ? 14 : radix == 16 ? 6 : 14;
  static constexpr ptrdiff_t outer = radix == 8 ? 0 : 6 * (radix / 4);
  static constexpr bool outer_first = radix == 32 && Precision::kCombine32SecondFirst;
};

// From the buffer: radix/2 bins upward, as many downward.
template <int radix, bool past>
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
template <int radix, CombineKernel kernel>
[[gnu::always_inline]] inline XfmStatus combine_parts(const Env8* self, Real* t, const Real* w, ptrdiff_t stride,
                                                      ptrdiff_t half_step, const Range& bins) {
  using Section = Sections<radix>;
  const Real* const table = static_cast<const Real*>(self->table);
  const ptrdiff_t chunks = self->chunks, step = 2 * half_step;
  const Real* inner = table + (Section::outer_first ? chunks * Section::outer * V : 0) + bins.first * Section::inner * V;
  const Real* outer = table + (Section::outer_first ? 0 : chunks * Section::inner * V) + bins.first * Section::outer * V;
  w += bins.first * 2 * radix * kColumns;
  Real* rising = t;
  Real* falling = t + half_step + 2 * stride * (bins.count - 1);
  alignas(32) Real rows[2 * radix * kColumns];
  const bool far = far_apart(step), buffered = kManyRows <= 2 * radix || far;
  const bool past = far && past_caches(t, 2 * bins.count * radix * stride);
  const ptrdiff_t near = buffered ? kColumns : stride, next = buffered ? 2 * kColumns : step;
  const ptrdiff_t fetched = bytes_of(2 * radix * kColumns * chunks) >= kFetched ? chunks - 1 - bins.first : 0;
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

// From the buffer: outputs u = 0 .. d-1 upward from first, the others with the last of all below last + m.
template <ptrdiff_t d, ptrdiff_t width, bool past>
[[gnu::always_inline]] inline void copy_groups(Real* first, Real* last, ptrdiff_t m, const Real* rows) {
  for (ptrdiff_t u = 0; u < d; ++u) {
    copy_out<past>(first + m * u, rows + u * width, width);
    copy_out<past>(last - m * u, rows + (2 * d - 1 - u) * width, width);
  }
}

// Far rows of dst take K vectors of groups at once, by a buffer of 2d rows: outputs u = 0 .. d-1 upward, then
// u = -1 .. -d, whose elements run downward in dst. Where rows are far apart the number of vectors is a multiple of K.
template <int length, SynthesisKernel kernel>
[[gnu::always_inline]] inline XfmStatus synthesise_groups(const Env4* self, Real* dst, const Real* t,
                                                          const Range& groups) {
  constexpr ptrdiff_t K = kTogether, d = length / 2;
  const Real* table = static_cast<const Real*>(self->table) + groups.first * length * V;
  const ptrdiff_t ahead = groups.after < 0 ? 0 : (groups.after - groups.first) * length * V;
  const ptrdiff_t m = self->cols, wrap = self->wrap;
  alignas(32) Real rows[length * K * V];
  const bool buffered = far_apart(m);
  const bool past = buffered && past_caches(dst, self->length) && past_caches(dst + wrap + 1, self->length);
  const ptrdiff_t together = buffered ? K : 1, step = buffered ? K * V : m;
  for (ptrdiff_t i = groups.first; i < groups.first + groups.count; i += together) {
    Real* const up = buffered ? rows : dst + V * i;
    Real* const down = buffered ? rows : dst;
    ptrdiff_t lowest = buffered ? (3 * d - 1) * K * V + V * (K - 1) : wrap - V * i - (V - 1);
    for (ptrdiff_t k = 0; k < together; ++k, t += length * V, table += length * V, lowest -= V) {
      if (ahead != 0) fetch(table + ahead, length * V);
      kernel(t, table, {up + V * k}, {down, lowest}, step);
    }
    Real* const last = dst + (wrap + 1 - m * d - V * (i + K));
    if (past)
      copy_groups<d, K * V, true>(dst + V * i, last, m, rows);
    else if (buffered)
      copy_groups<d, K * V, false>(dst + V * i, last, m, rows);
  }
  return xfmStatusOk;
}

// Stages 1 and 2 by turns: env8 for V*K values of h in a row makes K whole vectors of groups in each of d' stretches of
// bins, rising and falling ones by turns, and env4 takes them at once. The stretches stand side by side in the front of t, one
// bin further apart than they are long so that they spread over the sets of the first cache.
inline void transform_by_turns(const Env7* split, const Env4* groups, Real* dst, Real* t, const Real* src,
                               ptrdiff_t mirror) {
  constexpr ptrdiff_t K = kTogether, stretch = 2 * kColumns * (V * K + 1), most_stretches = 32;
  static_assert(most_stretches * stretch * static_cast<ptrdiff_t>(sizeof(Real)) <= kTurns, "the stretches fit into t");
  const Env8* const combine = first_of<Env8>(split->stageOne);
  Real* const w = static_cast<Real*>(split->scratch);
  const ptrdiff_t next = combine->cols / V;  // groups from one f to the next
  const auto groups_of = [=](ptrdiff_t s, ptrdiff_t h) { return s % 2 == 0 ? s / 2 * next + h / V : (s + 1) / 2 * next - h / V - K; };
  XFM_DCT4(env9_compute)(first_of<Env9>(split->stageTwo), w, src, 0, mirror);
  for (ptrdiff_t h = 0; h < combine->chunks; h += V * K) {
    XFM_DCT4(env8_compute)(combine, t, w, kColumns, stretch, {h, V * K});
    for (ptrdiff_t s = 0; s < combine->radix; ++s) {
      const ptrdiff_t after = s + 1 < combine->radix ? groups_of(s + 1, h) : groups_of(0, h + V * K);
      XFM_DCT4(env4_compute)(groups, dst, t + s * stretch, {groups_of(s, h), K, after});
    }
  }
}

inline void transform_in_order(const Env3* columns, const Env2* groups, Real* dst, Real* t, const Real* src) {
  if (columns->rule == 1) XFM_DCT4(env5_compute)(first_of<Env5>(columns->stageOne), t, src);
  if (groups->rule != 1) return;
  const Env4* const synthesis = first_of<Env4>(groups->stageOne);
  XFM_DCT4(env4_compute)(synthesis, dst, t, {0, synthesis->chunks});
}

// The env7 whose result stage 2 takes by turns, null if the stages run in order.
inline const Env7* split_for_turns(const Env3* columns, const Env2* groups) {
  if (columns->rule != 1 || groups->rule != 1) return nullptr;
  const Env5* const forward = first_of<Env5>(columns->stageOne);
  if (forward->rule != kPartGeneral) return nullptr;
  const Env7* const split = first_of<Env7>(forward->stageOne);
  return split->rule == 1 ? split : nullptr;
}

// The general rule of the root.
inline XfmStatus transform_general(const Env1* self, Real* dst, const Real* src) {
  Real* const scratch = static_cast<Real*>(self->scratch);
  const Env3* const columns = first_of<Env3>(self->stageTwo);
  const Env2* const groups = first_of<Env2>(self->stageOne);
  const Env7* const split = bytes_of(self->length) < kTurns ? nullptr : split_for_turns(columns, groups);
  if (split != nullptr)
    transform_by_turns(split, first_of<Env4>(groups->stageOne), dst, scratch, src, columns->wrap);
  else
    transform_in_order(columns, groups, dst, scratch, src);
  if (bytes_of(self->length) >= kPastCaches) __atomic_thread_fence(__ATOMIC_SEQ_CST);  // other threads see all rows
  return xfmStatusOk;
}

}  // namespace
}  // namespace xfm::dct4

extern "C" {

XfmStatus XFM_DCT4(env5_compute)(const xfm::dct4::Env5* self, Real* t, const Real* src) {
  using namespace xfm::dct4;
  switch (self->rule) {
    case 3: return transform_columns<forward8>(self, t, src);
    case 4: return transform_columns<forward16>(self, t, src);
    case 5: return transform_columns<forward32>(self, t, src);
    case 6: return transform_columns<forward64, 32>(self, t, src);
    case kPartGeneral: break;
    default: return kNoSuchRule;
  }
  XFM_DCT4(env7_compute)(first_of<Env7>(self->stageOne), t, src, 0, self->wrap, kColumns);
  return xfmStatusOk;
}

// All columns from start on; rows of t stand stride apart.
XfmStatus XFM_DCT4(env7_compute)(const xfm::dct4::Env7* self, Real* t, const Real* src, ptrdiff_t start, ptrdiff_t mirror,
                                 ptrdiff_t stride) {
  using namespace xfm::dct4;
  if (self->rule != 1) return kNoSuchRule;
  Real* const scratch = static_cast<Real*>(self->scratch);
  XFM_DCT4(env9_compute)(first_of<Env9>(self->stageTwo), scratch, src, start, mirror);
  const Env8* const combine = first_of<Env8>(self->stageOne);
  XFM_DCT4(env8_compute)(combine, t, scratch, stride, combine->cols * stride, {0, combine->chunks});
  return xfmStatusOk;
}

// Sequence r, bin h: the real part in row 2d'h + r of w, the imaginary part in row 2d'h + d' + r.
XfmStatus XFM_DCT4(env9_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src, ptrdiff_t start, ptrdiff_t mirror) {
  using namespace xfm::dct4;
  if (self->rule != kPartGeneral) return XFM_DCT4(env9_direct_compute)(self, w, src, start, mirror);
  const Env7* const split = first_of<Env7>(self->stageOne);
  const ptrdiff_t shift = self->outerSpan;
  for (ptrdiff_t r = 0; r < self->radix; ++r)
    XFM_DCT4(env7_compute)(split, w + r * kColumns, src, start + r * shift, mirror - 2 * r * shift, self->radix * kColumns);
  return xfmStatusOk;
}

// Apart from env9_compute, whose levels stand on the stack together: the buffers are there once.
XfmStatus XFM_DCT4(env9_direct_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                        ptrdiff_t mirror) {
  using namespace xfm::dct4;
  switch (self->rule) {
    case 4: return transform_decimated<16, forward16>(self, w, src, start, mirror);
    case 5: return transform_decimated<32, forward32>(self, w, src, start, mirror);
    case 6: return transform_decimated<64, forward64>(self, w, src, start, mirror);
    default: return kNoSuchRule;
  }
}

XfmStatus XFM_DCT4(env8_compute)(const xfm::dct4::Env8* self, Real* t, const Real* w, ptrdiff_t stride,
                                 ptrdiff_t half_step, const xfm::dct4::Range& bins) {
  using namespace xfm::dct4;
  switch (self->rule) {
    case 3: return combine_parts<8, combine8>(self, t, w, stride, half_step, bins);
    case 4: return combine_parts<16, combine16>(self, t, w, stride, half_step, bins);
    case 5: return combine_parts<32, combine32>(self, t, w, stride, half_step, bins);
    default: return kNoSuchRule;
  }
}

XfmStatus XFM_DCT4(env4_compute)(const xfm::dct4::Env4* self, Real* dst, const Real* t, const xfm::dct4::Range& groups) {
  using namespace xfm::dct4;
  switch (self->rule) {
#ifdef XFM_DCT4_SYNTHESIS_8
    case 3: return synthesise_groups<8, synthesis8>(self, dst, t, groups);
#endif
    case 4: return synthesise_groups<16, synthesis16>(self, dst, t, groups);
    case 5: return synthesise_groups<32, synthesis32>(self, dst, t, groups);
    case 6: return synthesise_groups<64, synthesis64>(self, dst, t, groups);
    default: return kNoSuchRule;
  }
}
}
