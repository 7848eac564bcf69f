// Transforming: the loops over the stage kernels.
//
// The length is n = d*m. Stage 1 (env5) folds src into d columns of m reals and transforms each, V columns at a time, into
// the root's scratch: row 2g holds the real parts of bin g of all columns, row 2g+1 the imaginary parts. Stage 2 (env4)
// twiddles and synthesises the groups, V at a time, from the scratch into dst. Columns that are too long are split by an
// env7: its env9 transforms d' decimated sequences into the env7's scratch, its env8 combines them.
//
// Lengths are powers of two, so the rows that one kernel reads or writes fall on few sets of a cache, and each row is
// wider than the vector that one kernel takes of it. Three things keep the traffic at one visit a line: an env7 takes all
// columns of a row before it goes on; its scratch is used from the front with rows side by side, however far apart the
// rows of its result lie; and where rows are far apart they go through a small buffer, whole rows at a time.
#pragma once

#include <stddef.h>

#include "dct4/access.h"

namespace xfm::dct4 {
struct Rows {
  ptrdiff_t columns;  // side by side
  ptrdiff_t stride;   // from row to row
};
}  // namespace xfm::dct4

extern "C" {
XFM_INTERNAL XfmStatus XFM_DCT4(env4_compute)(const xfm::dct4::Env4* self, Real* dst, const Real* t);
XFM_INTERNAL XfmStatus XFM_DCT4(env5_compute)(const xfm::dct4::Env5* self, Real* t, const Real* src);
XFM_INTERNAL XfmStatus XFM_DCT4(env7_compute)(const xfm::dct4::Env7* self, Real* t, const Real* src, ptrdiff_t start,
                                              ptrdiff_t mirror, const xfm::dct4::Rows& result);
XFM_INTERNAL XfmStatus XFM_DCT4(env8_compute)(const xfm::dct4::Env8* self, Real* t, const Real* w, ptrdiff_t columns,
                                              ptrdiff_t stride);
XFM_INTERNAL XfmStatus XFM_DCT4(env9_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                              ptrdiff_t mirror, ptrdiff_t columns);
}

namespace xfm::dct4 {
namespace {

constexpr XfmStatus kNoSuchRule = -5;  // no planned state has one
constexpr ptrdiff_t V = Precision::kLanes;
constexpr ptrdiff_t kWidest = 32;  // columns of a split

// From these distances of rows on, in bytes, they go through a buffer; by measurement. Rows a multiple of 4096 bytes apart
// share the sets of the first cache, which hurts most where every row of a scratch is written by halves.
constexpr ptrdiff_t kFarApart = 16384, kFarApartBins = 4096;
inline ptrdiff_t bytes_of(ptrdiff_t elements) { return elements * static_cast<ptrdiff_t>(sizeof(Real)); }
inline bool far_apart(ptrdiff_t elements) { return bytes_of(elements) >= kFarApart; }

using ForwardKernel = void(const Columns&, ptrdiff_t, Real*, ptrdiff_t);
using CombineKernel = void(const Real*, ptrdiff_t, const Real*, const Real*, Real*, Real*, ptrdiff_t, ptrdiff_t);
using SynthesisKernel = void(const Real*, const Real*, const RisingOut&, const FallingOut&, ptrdiff_t);

template <class Env>
const Env* first_of(const EnvList* stage) {
  return static_cast<const Env*>(EnvList_get(stage, 0));
}

template <ForwardKernel kernel>
[[gnu::always_inline]] inline XfmStatus transform_columns(const Env5* self, Real* t, const Real* src) {
  for (ptrdiff_t i = 0; i < self->vecRadix; ++i)
    kernel(source_columns(src, V * i, self->wrap - 2 * V * i), self->span, t + V * i, self->radix);
  return xfmStatusOk;
}

// The samples of one decimated sequence of all columns, row by row: rising t, falling t, the last one.
template <int length>
[[gnu::always_inline]] inline void copy_samples(Real* rows, const Columns& x, ptrdiff_t step, ptrdiff_t columns) {
  const ptrdiff_t wider = columns - V;  // the reflected columns of a row lie below those of its first vector
  for (ptrdiff_t t = 0; t < length / 2; ++t) copy_in(rows + t * columns, x.x + x.up + t * step, columns);
  rows += (length / 2 - 1) * columns;
  for (ptrdiff_t t = 1; t < length / 2; ++t) copy_in(rows + t * columns, x.x + x.down - wider + t * step, columns);
  copy_in(rows + length / 2 * columns, x.x + x.end - wider, columns);
}

template <int length, ForwardKernel kernel>
[[gnu::always_inline]] inline XfmStatus transform_decimated(const Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                                            ptrdiff_t mirror, ptrdiff_t columns) {
  const ptrdiff_t shift = self->outerSpan, step = self->span, stride = self->radix * columns;
  alignas(32) Real rows[length * kWidest], bins[length * kWidest];
  const bool buffered = far_apart(step), bins_buffered = bytes_of(stride) >= kFarApartBins;
  for (ptrdiff_t r = 0; r < self->radix; ++r, w += columns, start += shift, mirror -= 2 * shift) {
    if (buffered) copy_samples<length>(rows, source_columns(src, start, mirror), step, columns);
    Real* const y = bins_buffered ? bins : w;
    for (ptrdiff_t b = 0; b < columns; b += V) {
      const ptrdiff_t reflected = columns - V - b;
      const Columns copied = {rows, b, (length / 2 - 1) * columns + reflected, (length - 1) * columns + reflected};
      kernel(buffered ? copied : source_columns(src, start + b, mirror - 2 * b), buffered ? columns : step, y + b,
             bins_buffered ? columns : stride);
    }
    for (ptrdiff_t k = 0; bins_buffered && k < length; ++k) copy_out(w + k * stride, bins + k * columns, columns);
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

// Bins h + m2*f and m2*f - 1 - h of every column for each h, from `columns` columns side by side to rows `stride` apart.
template <int radix, CombineKernel kernel>
[[gnu::always_inline]] inline XfmStatus combine_parts(const Env8* self, Real* t, const Real* w, ptrdiff_t columns,
                                                      ptrdiff_t stride) {
  using Section = Sections<radix>;
  const Real* const table = static_cast<const Real*>(self->table);
  const ptrdiff_t chunks = self->chunks, step = 2 * ptrdiff_t{self->cols} * stride;
  const Real* inner = table + (Section::outer_first ? chunks * Section::outer * V : 0);
  const Real* outer = table + (Section::outer_first ? 0 : chunks * Section::inner * V);
  Real* rising = t;
  Real* falling = t + step - 2 * stride;
  alignas(32) Real rows[2 * radix * kWidest];
  const bool buffered = far_apart(step);
  const ptrdiff_t near = buffered ? columns : stride, next = buffered ? 2 * columns : step;
  for (ptrdiff_t h = 0; h < chunks; ++h) {
    Real* const up = buffered ? rows : rising;
    Real* const down = buffered ? rows + radix * columns : falling;
    for (ptrdiff_t b = 0; b < columns; b += V) kernel(w + b, columns, inner, outer, up + b, down + b, near, next);
    for (ptrdiff_t f = 0; buffered && f < radix / 2; ++f) {
      copy_out(rising + f * step, rows + 2 * f * columns, columns);
      copy_out(rising + f * step + stride, rows + (2 * f + 1) * columns, columns);
      copy_out(falling + f * step, rows + (radix + 2 * f) * columns, columns);
      copy_out(falling + f * step + stride, rows + (radix + 2 * f + 1) * columns, columns);
    }
    w += 2 * radix * columns;
    inner += Section::inner * V;
    outer += Section::outer * V;
    rising += 2 * stride;
    falling -= 2 * stride;
  }
  return xfmStatusOk;
}

// Far rows of dst take K vectors of groups at once, by a buffer of 2d rows: outputs u = 0 .. d-1 upward, then
// u = -1 .. -d, whose elements run downward in dst. Where rows are far apart the number of vectors is a multiple of K.
template <int length, SynthesisKernel kernel>
[[gnu::always_inline]] inline XfmStatus synthesise_groups(const Env4* self, Real* dst, const Real* t) {
  constexpr ptrdiff_t K = 4, d = length / 2;
  const Real* table = static_cast<const Real*>(self->table);
  const ptrdiff_t m = self->cols, wrap = self->wrap;
  alignas(32) Real rows[length * K * V];
  const bool buffered = far_apart(m);
  const ptrdiff_t together = buffered ? K : 1, step = buffered ? K * V : m;
  for (ptrdiff_t i = 0; i < self->chunks; i += together) {
    Real* const up = buffered ? rows : dst + V * i;
    Real* const down = buffered ? rows : dst;
    ptrdiff_t lowest = buffered ? (3 * d - 1) * K * V + V * (K - 1) : wrap - V * i - (V - 1);
    for (ptrdiff_t k = 0; k < together; ++k, t += length * V, table += length * V, lowest -= V)
      kernel(t, table, {up + V * k}, {down, lowest}, step);
    for (ptrdiff_t u = 0; buffered && u < d; ++u) {
      copy_out(dst + m * u + V * i, rows + u * K * V, K * V);
      copy_out(dst + (wrap - m * (d + u) - V * (i + K) + 1), rows + (2 * d - 1 - u) * K * V, K * V);
    }
  }
  return xfmStatusOk;
}

// The general rule of the root.
inline XfmStatus transform_general(const Env1* self, Real* dst, const Real* src) {
  Real* const scratch = static_cast<Real*>(self->scratch);
  const Env3* const columns = first_of<Env3>(self->stageTwo);
  if (columns->rule == 1) XFM_DCT4(env5_compute)(first_of<Env5>(columns->stageOne), scratch, src);
  const Env2* const groups = first_of<Env2>(self->stageOne);
  if (groups->rule == 1) XFM_DCT4(env4_compute)(first_of<Env4>(groups->stageOne), dst, scratch);
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
    case 6: return transform_columns<forward64>(self, t, src);
    case kPartGeneral: break;
    default: return kNoSuchRule;
  }
  const Rows rows = {self->radix, self->radix};
  XFM_DCT4(env7_compute)(first_of<Env7>(self->stageOne), t, src, 0, self->wrap, rows);
  return xfmStatusOk;
}

// All columns from start on.
XfmStatus XFM_DCT4(env7_compute)(const xfm::dct4::Env7* self, Real* t, const Real* src, ptrdiff_t start, ptrdiff_t mirror,
                                 const xfm::dct4::Rows& result) {
  using namespace xfm::dct4;
  if (self->rule != 1) return kNoSuchRule;
  Real* const scratch = static_cast<Real*>(self->scratch);
  XFM_DCT4(env9_compute)(first_of<Env9>(self->stageTwo), scratch, src, start, mirror, result.columns);
  XFM_DCT4(env8_compute)(first_of<Env8>(self->stageOne), t, scratch, result.columns, result.stride);
  return xfmStatusOk;
}

// Sequence r, bin h: the real part in row 2d'h + r of w, the imaginary part in row 2d'h + d' + r.
XfmStatus XFM_DCT4(env9_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src, ptrdiff_t start, ptrdiff_t mirror,
                                 ptrdiff_t columns) {
  using namespace xfm::dct4;
  switch (self->rule) {
    case 4: return transform_decimated<16, forward16>(self, w, src, start, mirror, columns);
    case 5: return transform_decimated<32, forward32>(self, w, src, start, mirror, columns);
    case 6: return transform_decimated<64, forward64>(self, w, src, start, mirror, columns);
    case kPartGeneral: break;
    default: return kNoSuchRule;
  }
  const Env7* const split = first_of<Env7>(self->stageOne);
  const ptrdiff_t shift = self->outerSpan;
  const Rows rows = {columns, self->radix * columns};
  for (ptrdiff_t r = 0; r < self->radix; ++r)
    XFM_DCT4(env7_compute)(split, w + r * columns, src, start + r * shift, mirror - 2 * r * shift, rows);
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env8_compute)(const xfm::dct4::Env8* self, Real* t, const Real* w, ptrdiff_t columns, ptrdiff_t stride) {
  using namespace xfm::dct4;
  switch (self->rule) {
    case 3: return combine_parts<8, combine8>(self, t, w, columns, stride);
    case 4: return combine_parts<16, combine16>(self, t, w, columns, stride);
    case 5: return combine_parts<32, combine32>(self, t, w, columns, stride);
    default: return kNoSuchRule;
  }
}

XfmStatus XFM_DCT4(env4_compute)(const xfm::dct4::Env4* self, Real* dst, const Real* t) {
  using namespace xfm::dct4;
  switch (self->rule) {
#ifdef XFM_DCT4_SYNTHESIS_8
    case 3: return synthesise_groups<8, synthesis8>(self, dst, t);
#endif
    case 4: return synthesise_groups<16, synthesis16>(self, dst, t);
    case 5: return synthesise_groups<32, synthesis32>(self, dst, t);
    case 6: return synthesise_groups<64, synthesis64>(self, dst, t);
    default: return kNoSuchRule;
  }
}
}
