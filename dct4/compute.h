// Transforming: the loops over the stage kernels.
//
// The length is n = d*m. Stage 1 (env5) folds src into d columns of m reals and transforms each, V columns at a time, into
// the root's scratch: row 2g holds the real parts of bin g of all columns, row 2g+1 the imaginary parts. Stage 2 (env4)
// twiddles and synthesises the groups, V at a time, from the scratch into dst. A column that is too long is split by an
// env7: its env9 transforms d' decimated sequences into the env7's scratch, its env8 combines them.
#pragma once

#include <stddef.h>

#include "dct4/access.h"

extern "C" {
XFM_INTERNAL XfmStatus XFM_DCT4(env4_compute)(const xfm::dct4::Env4* self, Real* dst, const Real* t);
XFM_INTERNAL XfmStatus XFM_DCT4(env5_compute)(const xfm::dct4::Env5* self, Real* t, const Real* src);
XFM_INTERNAL XfmStatus XFM_DCT4(env7_compute)(const xfm::dct4::Env7* self, Real* t, const Real* src, ptrdiff_t start,
                                              ptrdiff_t mirror, ptrdiff_t column);
XFM_INTERNAL XfmStatus XFM_DCT4(env8_compute)(const xfm::dct4::Env8* self, Real* t, const Real* w, ptrdiff_t column,
                                              ptrdiff_t from);
XFM_INTERNAL XfmStatus XFM_DCT4(env9_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src, ptrdiff_t start,
                                              ptrdiff_t mirror, ptrdiff_t column);
}

namespace xfm::dct4 {
namespace {

constexpr XfmStatus kNoSuchRule = -5;  // no planned state has one

using ForwardKernel = void(const Columns&, ptrdiff_t, Real*, ptrdiff_t);
using CombineKernel = void(const Real*, const Real*, const Real*, Real*, Real*, ptrdiff_t, ptrdiff_t);
using SynthesisKernel = void(const Real*, const Real*, const RisingOut&, const FallingOut&, ptrdiff_t);

template <class Env>
const Env* first_of(const EnvList* stage) {
  return static_cast<const Env*>(EnvList_get(stage, 0));
}

template <ForwardKernel kernel>
[[gnu::always_inline]] inline XfmStatus transform_columns(const Env5* self, Real* t, const Real* src) {
  constexpr ptrdiff_t V = Precision::kLanes;
  for (ptrdiff_t i = 0; i < self->vecRadix; ++i)
    kernel({src, V * i, self->wrap - 2 * V * i}, self->span, t + V * i, self->radix);
  return xfmStatusOk;
}

template <ForwardKernel kernel>
[[gnu::always_inline]] inline XfmStatus transform_decimated(const Env9* self, Real* w, const Columns& x) {
  const ptrdiff_t shift = self->outerSpan;
  for (ptrdiff_t r = 0; r < self->radix; ++r)
    kernel({x.src, x.start + r * shift, x.mirror - 2 * r * shift}, self->span, w + r * self->outerStride, self->stride);
  return xfmStatusOk;
}

// Rows of the inner and the outer section for one h; radix 8 has but one section.
template <int radix>
struct CombineRows {
  static constexpr ptrdiff_t inner = radix == 8 ? 14 : radix == 16 ? 6 : 14;
  static constexpr ptrdiff_t outer = radix == 8 ? 0 : 6 * (radix / 4);
  static constexpr bool outer_first = radix == 32 && Precision::kCombine32SecondFirst;
};

template <int radix, CombineKernel kernel>
[[gnu::always_inline]] inline XfmStatus combine_parts(const Env8* self, Real* t, const Real* w) {
  constexpr ptrdiff_t V = Precision::kLanes;
  using Rows = CombineRows<radix>;
  const Real* const table = static_cast<const Real*>(self->table);
  const ptrdiff_t stride = self->stride, chunks = self->chunks, step = 2 * ptrdiff_t{self->cols} * stride;
  const Real* const inner = table + (Rows::outer_first ? chunks * Rows::outer * V : 0);
  const Real* const outer = table + (Rows::outer_first ? 0 : chunks * Rows::inner * V);
  for (ptrdiff_t h = 0; h < chunks; ++h)
    kernel(w + h * self->doubleSpan, inner + h * Rows::inner * V, outer + h * Rows::outer * V, t + 2 * h * stride,
           t + step - 2 * (h + 1) * stride, stride, step);
  return xfmStatusOk;
}

template <SynthesisKernel kernel>
[[gnu::always_inline]] inline XfmStatus synthesise_groups(const Env4* self, Real* dst, const Real* t) {
  constexpr ptrdiff_t V = Precision::kLanes;
  const Real* const table = static_cast<const Real*>(self->table);
  for (ptrdiff_t i = 0; i < self->chunks; ++i)
    kernel(t + i * self->vecSpan, table + i * self->vecSpan, {dst + V * i}, {dst, self->wrap - V * i - (V - 1)}, self->cols);
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
  constexpr ptrdiff_t V = Precision::kLanes;
  const Env7* const split = first_of<Env7>(self->stageOne);
  for (ptrdiff_t i = 0; i < self->vecRadix; ++i)
    XFM_DCT4(env7_compute)(split, t, src, V * i, self->wrap - 2 * V * i, V * i);
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env7_compute)(const xfm::dct4::Env7* self, Real* t, const Real* src, ptrdiff_t start, ptrdiff_t mirror,
                                 ptrdiff_t column) {
  using namespace xfm::dct4;
  if (self->rule != 1) return kNoSuchRule;
  Real* const scratch = static_cast<Real*>(self->scratch);
  XFM_DCT4(env9_compute)(first_of<Env9>(self->stageTwo), scratch, src, start, mirror, column);
  XFM_DCT4(env8_compute)(first_of<Env8>(self->stageOne), t, scratch, column, column);
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env9_compute)(const xfm::dct4::Env9* self, Real* w, const Real* src, ptrdiff_t start, ptrdiff_t mirror,
                                 ptrdiff_t column) {
  using namespace xfm::dct4;
  const Columns columns = {src, start, mirror};
  switch (self->rule) {
    case 4: return transform_decimated<forward16>(self, w + column, columns);
    case 5: return transform_decimated<forward32>(self, w + column, columns);
    case 6: return transform_decimated<forward64>(self, w + column, columns);
    case kPartGeneral: break;
    default: return kNoSuchRule;
  }
  const Env7* const split = first_of<Env7>(self->stageOne);
  const ptrdiff_t shift = self->outerSpan;
  for (ptrdiff_t r = 0; r < self->radix; ++r)
    XFM_DCT4(env7_compute)(split, w, src, start + r * shift, mirror - 2 * r * shift, column + r * self->outerStride);
  return xfmStatusOk;
}

XfmStatus XFM_DCT4(env8_compute)(const xfm::dct4::Env8* self, Real* t, const Real* w, ptrdiff_t column, ptrdiff_t from) {
  using namespace xfm::dct4;
  switch (self->rule) {
    case 3: return combine_parts<8, combine8>(self, t + column, w + from);
    case 4: return combine_parts<16, combine16>(self, t + column, w + from);
    case 5: return combine_parts<32, combine32>(self, t + column, w + from);
    default: return kNoSuchRule;
  }
}

XfmStatus XFM_DCT4(env4_compute)(const xfm::dct4::Env4* self, Real* dst, const Real* t) {
  using namespace xfm::dct4;
  switch (self->rule) {
#ifdef XFM_DCT4_SYNTHESIS_8
    case 3: return synthesise_groups<synthesis8>(self, dst, t);
#endif
    case 4: return synthesise_groups<synthesis16>(self, dst, t);
    case 5: return synthesise_groups<synthesis32>(self, dst, t);
    case 6: return synthesise_groups<synthesis64>(self, dst, t);
    default: return kNoSuchRule;
  }
}
}
