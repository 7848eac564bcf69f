// Twiddle tables: the function objects and the rows of env4 and env8 filled through them.
//
// Every rounding step belongs to the table: the angle is formed in the element type, is not reduced, and each lane is
// evaluated by itself. A row is one 32-byte vector; rows stand in pairs, cosine and sine.
#pragma once

#include "dct4/access.h"
#include "dct4/column_order.h"
#include "dct4/entries.h"

namespace xfm::dct4 {
namespace {

// With i = 0 .. n/(2d)-1 and j = 2r or 2r+1, the cosine or the sine of pi (2i+1)(2r+1)/(4n).
template <class P>
typename P::Real compose_at(const FCompose<typename P::Real>* self, int32_t i, int32_t j) {
  using Real = typename P::Real;
  const int32_t t = i * self->spanAgain + j;
  const int32_t h = t / 2, q = h / self->radix, r = h % self->radix;
  const int32_t num = 2 * (2 * q + 1) * (2 * r + 1);
  const Real x = static_cast<Real>(num) / static_cast<Real>(self->angleDiv);
  return t % 2 != 0 ? P::sin_pi(x) : P::cos_pi(x);
}

template <class P>
typename P::Real split_at(const FSplit<typename P::Real>* self, int32_t chunk, int32_t lane, int32_t row) {
  return self->inner->head.at(self->inner, P::kLanes * chunk + lane, row, 0);
}

// (i + 1/2) / m2, for the column of length m = d'*m2.
template <class Real>
Real lambda_at(const Lambda<Real>* self, int32_t i) {
  return (static_cast<Real>(i) + Real(0.5)) / static_cast<Real>(self->localLength / self->radix);
}

// One row as a whole vector. By itself: a caller that held a vector would align its stack for it.
template <class Real>
[[gnu::noinline]] void store_row(Real* row, const Real* lanes) {
  move_in(row, lanes);
}

// A row from its lanes, the last one first.
template <class P, class Lane>
void fill_row(typename P::Real* row, const Lane& lane_value) {
  typename P::Real lanes[P::kLanes];
  for (int32_t lane = P::kLanes - 1; lane >= 0; --lane) lanes[lane] = lane_value(lane);
  store_row(row, lanes);
}

template <class P>
void fill_synthesis_table(const Env4* self) {
  using Real = typename P::Real;
  const auto* twiddle = static_cast<const FunctionHead<Real>*>(self->twiddle);
  Real* row = static_cast<Real*>(self->table);
  for (int32_t c = 0; c < self->chunks; ++c)
    for (int32_t p = 0; p < self->radix; ++p)
      for (int32_t part = 0; part < 2; ++part, row += P::kLanes) {
        const int32_t k = 2 * synthesis_column(self->radix, p) + part;
        fill_row<P>(row, [&](int32_t lane) { return twiddle->at(twiddle, c, lane, k); });
      }
}

// One section of env8's table: for every i, for j below `shifts`, the products of t(i) + j with 1, 2 .. `factors` units.
template <class Real>
struct Section {
  int32_t shifts;
  int32_t factors;
  Real unit;
};

template <class P, class Real = typename P::Real>
Real* fill_section(const Env8* self, const Section<Real>& section, Real* row) {
  for (int32_t i = 0; i < self->chunks; ++i)
    for (int32_t j = 0; j < section.shifts; ++j)
      for (int32_t f = 1; f <= section.factors; ++f) {
        const Real factor = static_cast<Real>(f) * section.unit;  // exact
        const auto x = [&](int32_t lane) {
          return (Entries<P>::function_at(self->twiddle, i, lane, 0) + static_cast<Real>(j)) * factor;
        };
        fill_row<P>(row, [&](int32_t lane) { return P::cos_pi(x(lane)); });
        fill_row<P>(row + P::kLanes, [&](int32_t lane) { return P::sin_pi(x(lane)); });
        row += 2 * P::kLanes;
      }
  return row;
}

template <class P>
void fill_combine_table(const Env8* self) {
  using Real = typename P::Real;
  Real* const table = static_cast<Real*>(self->table);
  const Section<Real> whole = {1, self->radix - 1, Real(2) / static_cast<Real>(self->radix)};
  if (self->radix <= 8) {
    fill_section<P>(self, whole, table);
    return;
  }
  // Radix d' = 4e: the rotations of the e-point transforms, and those between them and the four-point transforms.
  const int32_t e = self->radix / 4;
  const Section<Real> inner = {1, e - 1, Real(2) / static_cast<Real>(e)};
  const Section<Real> outer = {e, 3, Real(2) / static_cast<Real>(self->radix)};
  const bool outer_first = self->radix == kLastRadix && P::kOuterSectionFirst;
  fill_section<P>(self, outer_first ? inner : outer, fill_section<P>(self, outer_first ? outer : inner, table));
}

}  // namespace
}  // namespace xfm::dct4
