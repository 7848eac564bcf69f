// Twiddles and syntheses of the groups (env4), V at a time, from the rows of the root's scratch into dst.
#pragma once

#include "dct4/stage_columns.h"

namespace xfm::dct4 {
namespace {

// From the buffer: outputs u = 0 .. d-1 upward from first, the others with the last of all below last + m.
template <ptrdiff_t d, ptrdiff_t width, bool past, class Real>
[[gnu::always_inline]] inline void copy_groups(Real* first, Real* last, ptrdiff_t m, const Real* rows) {
  for (ptrdiff_t u = 0; u < d; ++u) {
    copy_out<past>(first + m * u, rows + u * width, width);
    copy_out<past>(last - m * u, rows + (2 * d - 1 - u) * width, width);
  }
}

// Far rows of dst take K vectors of groups at once, by a buffer of 2d rows: outputs u = 0 .. d-1 upward, then
// u = -1 .. -d, whose elements run downward in dst. Where rows are far apart the number of vectors is a multiple of K.
template <int length, class Real, SynthesisKernel<Real>* kernel>
[[gnu::always_inline]] inline XfmStatus synthesise_groups(const Env4* self, Real* dst, const Real* t,
                                                          const Range& groups) {
  constexpr ptrdiff_t V = kLanes<Real>, K = kTogether, d = length / 2;
  const Real* table = static_cast<const Real*>(self->table) + groups.first * length * V;
  const ptrdiff_t ahead = groups.after < 0 ? 0 : (groups.after - groups.first) * length * V;
  const ptrdiff_t m = self->cols, wrap = self->wrap;
  alignas(kVectorBytes) Real rows[length * K * V];
  const bool buffered = far_apart<Real>(m);
  const bool past = buffered && past_caches(dst, self->length) && past_caches(dst + wrap + 1, self->length);
  const ptrdiff_t together = buffered ? K : 1, step = buffered ? K * V : m;
  for (ptrdiff_t i = groups.first; i < groups.first + groups.count; i += together) {
    Real* const up = buffered ? rows : dst + V * i;
    Real* const down = buffered ? rows : dst;
    ptrdiff_t lowest = buffered ? (3 * d - 1) * K * V + V * (K - 1) : wrap - V * i - (V - 1);
    for (ptrdiff_t k = 0; k < together; ++k, t += length * V, table += length * V, lowest -= V) {
      if (ahead != 0) fetch(table + ahead, length * V);
      kernel(t, table, {up + V * k}, {down, lowest}, opaque(step));
    }
    Real* const last = dst + (wrap + 1 - m * d - V * (i + K));
    if (past)
      copy_groups<d, K * V, true>(dst + V * i, last, m, rows);
    else if (buffered)
      copy_groups<d, K * V, false>(dst + V * i, last, m, rows);
  }
  return xfmStatusOk;
}

}  // namespace
}  // namespace xfm::dct4
