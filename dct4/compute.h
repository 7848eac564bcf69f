// Transforming: the stages in their order.
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

#include "dct4/stage_columns.h"
#include "dct4/stage_combine.h"
#include "dct4/stage_groups.h"

namespace xfm::dct4 {
namespace {

// A split, all columns from start on; rows of t stand stride apart.
template <class P, class Real = typename P::Real>
[[gnu::always_inline]] inline XfmStatus transform_split(const Env7* self, Real* t, const Real* src, ptrdiff_t start,
                                                        ptrdiff_t mirror, ptrdiff_t stride) {
  if (self->rule != kPlanned) return kNoSuchRule;
  Real* const scratch = static_cast<Real*>(self->scratch);
  Entries<P>::env9_compute(first_of<Env9>(self->stageTwo), scratch, src, start, mirror);
  const Env8* const combine = first_of<Env8>(self->stageOne);
  Entries<P>::env8_compute(combine, t, scratch, stride, combine->cols * stride, {0, combine->chunks});
  return xfmStatusOk;
}

// Stages 1 and 2 by turns: env8 for V*K values of h in a row makes K whole vectors of groups in each of d' stretches of
// bins, rising and falling ones by turns, and env4 takes them at once. The stretches stand side by side in the front of t,
// one bin further apart than they are long so that they spread over the sets of the first cache.
template <class P, class Real = typename P::Real>
void transform_by_turns(const Env7* split, const Env4* groups, Real* dst, Real* t, const Real* src, ptrdiff_t mirror) {
  constexpr ptrdiff_t V = kLanes<Real>, K = kTogether, stretch = 2 * kColumns * (V * K + 1);
  static_assert(bytes_of<Real>(kLastRadix * stretch) <= kTurns, "the stretches fit into t");
  const Env8* const combine = first_of<Env8>(split->stageOne);
  Real* const w = static_cast<Real*>(split->scratch);
  const ptrdiff_t next = combine->cols / V;  // groups from one f to the next
  const auto groups_of = [=](ptrdiff_t s, ptrdiff_t h) {
    return s % 2 == 0 ? s / 2 * next + h / V : (s + 1) / 2 * next - h / V - K;
  };
  Entries<P>::env9_compute(first_of<Env9>(split->stageTwo), w, src, 0, mirror);
  for (ptrdiff_t h = 0; h < combine->chunks; h += V * K) {
    Entries<P>::env8_compute(combine, t, w, kColumns, stretch, {h, V * K});
    for (ptrdiff_t s = 0; s < combine->radix; ++s) {
      const ptrdiff_t after = s + 1 < combine->radix ? groups_of(s + 1, h) : groups_of(0, h + V * K);
      Entries<P>::env4_compute(groups, dst, t + s * stretch, {groups_of(s, h), K, after});
    }
  }
}

template <class P, class Real = typename P::Real>
void transform_in_order(const Env3* columns, const Env2* groups, Real* dst, Real* t, const Real* src) {
  if (columns->rule == kPlanned) Entries<P>::env5_compute(first_of<Env5>(columns->stageOne), t, src);
  if (groups->rule != kPlanned) return;
  const Env4* const synthesis = first_of<Env4>(groups->stageOne);
  Entries<P>::env4_compute(synthesis, dst, t, {0, synthesis->chunks});
}

// The env7 whose result stage 2 takes by turns, null if the stages run in order.
inline const Env7* split_for_turns(const Env3* columns, const Env2* groups) {
  if (columns->rule != kPlanned || groups->rule != kPlanned) return nullptr;
  const Env5* const forward = first_of<Env5>(columns->stageOne);
  if (forward->rule != kPartGeneral) return nullptr;
  const Env7* const split = first_of<Env7>(forward->stageOne);
  return split->rule == kPlanned ? split : nullptr;
}

// The general rule of the root. By itself: a function that held the straight lines, too, would save its registers for them.
template <class P, class Real = typename P::Real>
[[gnu::noinline]] XfmStatus transform_general(const Env1* self, Real* dst, const Real* src) {
  Real* const scratch = static_cast<Real*>(self->scratch);
  const Env3* const columns = first_of<Env3>(self->stageTwo);
  const Env2* const groups = first_of<Env2>(self->stageOne);
  const Env7* const split = takes_turns<Real>(self->length) ? split_for_turns(columns, groups) : nullptr;
  if (split != nullptr)
    transform_by_turns<P>(split, first_of<Env4>(groups->stageOne), dst, scratch, src, columns->wrap);
  else
    transform_in_order<P>(columns, groups, dst, scratch, src);
  if (bytes_of<Real>(self->length) >= kPastCaches) __atomic_thread_fence(__ATOMIC_SEQ_CST);  // other threads see all rows
  return xfmStatusOk;
}

}  // namespace
}  // namespace xfm::dct4
