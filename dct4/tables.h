// Twiddle tables of a unit: the function objects and the rows of env4 and env8 filled through them.
//
// Every rounding step belongs to the table: the angle is formed in the element type, is not reduced, and each lane is
// evaluated by itself. A row is one 32-byte vector; rows stand in pairs, cosine and sine.
#pragma once

#include "dct4/column_order.h"
#include "dct4/precision.h"

extern "C" {

// The generic call of a function object; integers that its `at` has no use for are ignored.
[[gnu::noinline, gnu::noclone]] static Real owng_TFunc_IIIR_at(const void* function, int32_t i, int32_t j, int32_t k) {
  return static_cast<const xfm::dct4::FunctionHead<Real>*>(function)->at(function, i, j, k);
}

// The twiddle between the columns and the groups of a length n: with i = 0 .. n/(2d)-1 and j = 2r or 2r+1, the cosine or
// the sine of pi (2i+1)(2r+1)/(4n).
XFM_INTERNAL Real XFM_DCT4(envfCompose_at)(const void* object, int32_t i, int32_t j, int32_t) {
  const auto* self = static_cast<const xfm::dct4::FCompose<Real>*>(object);
  const int32_t t = i * self->spanAgain + j;
  const int32_t h = t / 2, q = h / self->radix, r = h % self->radix;
  const int32_t num = 2 * (2 * q + 1) * (2 * r + 1);
  const Real x = static_cast<Real>(num) / static_cast<Real>(self->angleDiv);
  return t % 2 != 0 ? Precision::sin_pi(x) : Precision::cos_pi(x);
}

// The same by chunk, lane and row.
XFM_INTERNAL Real XFM_DCT4(envfsplit_at)(const void* object, int32_t i, int32_t j, int32_t k) {
  const auto* self = static_cast<const xfm::dct4::FSplit<Real>*>(object);
  return self->inner->head.at(self->inner, Precision::kLanes * i + j, k, 0);
}

// (i + 1/2) / m2, for the column of length m = d'*m2.
XFM_INTERNAL Real XFM_DCT4(envlambda_at)(const void* object, int32_t i, int32_t, int32_t) {
  const auto* self = static_cast<const xfm::dct4::Lambda<Real>*>(object);
  return (static_cast<Real>(i) + Real(0.5)) / static_cast<Real>(self->localLength / self->radix);
}

XFM_INTERNAL void XFM_DCT4(envfunction___del__)(void*) {}
}

namespace xfm::dct4 {
namespace {

inline void fill_synthesis_table(const Env4* self) {
  constexpr int32_t V = Precision::kLanes;
  const auto* twiddle = static_cast<const FunctionHead<Real>*>(self->twiddle);
  Real* row = static_cast<Real*>(self->table);
  for (int32_t c = 0; c < self->chunks; ++c)
    for (int32_t p = 0; p < self->radix; ++p)
      for (int32_t part = 0; part < 2; ++part, row += V)
        for (int32_t lane = V - 1; lane >= 0; --lane)
          row[lane] = twiddle->at(twiddle, c, lane, 2 * synthesis_column(self->radix, p) + part);
}

// One section of env8's table: for every i, for j below `shifts`, the products of t(i) + j with 1, 2 .. `factors` units.
struct Section {
  int32_t shifts;
  int32_t factors;
  Real unit;
};

inline Real* fill_section(const Env8* self, const Section& section, Real* row) {
  constexpr int32_t V = Precision::kLanes;
  for (int32_t i = 0; i < self->chunks; ++i)
    for (int32_t j = 0; j < section.shifts; ++j)
      for (int32_t f = 1; f <= section.factors; ++f) {
        const Real factor = static_cast<Real>(f) * section.unit;  // exact
        for (int32_t part = 0; part < 2; ++part, row += V)
          for (int32_t lane = V - 1; lane >= 0; --lane) {
            const Real x = (owng_TFunc_IIIR_at(self->twiddle, i, lane, 0) + static_cast<Real>(j)) * factor;
            row[lane] = part == 0 ? Precision::cos_pi(x) : Precision::sin_pi(x);
          }
      }
  return row;
}

inline void fill_combine_table(const Env8* self) {
  Real* const table = static_cast<Real*>(self->table);
  const Section whole = {1, self->radix - 1, Real(2) / static_cast<Real>(self->radix)};
  if (self->radix <= 8) {
    fill_section(self, whole, table);
    return;
  }
  // Radix d' = 4e: the rotations of the e-point transforms, and those between them and the four-point transforms.
  const int32_t e = self->radix / 4;
  const Section inner = {1, e - 1, Real(2) / static_cast<Real>(e)};
  const Section outer = {e, 3, Real(2) / static_cast<Real>(self->radix)};
  const bool outer_first = self->radix == 32 && Precision::kCombine32SecondFirst;
  fill_section(self, outer_first ? inner : outer, fill_section(self, outer_first ? outer : inner, table));
}

}  // namespace
}  // namespace xfm::dct4
