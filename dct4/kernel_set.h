// The kernels of a precision, which its generated unit defines: whole transforms in one straight line, and the inner
// transforms that the stages apply to V columns or groups at a time.
#pragma once

#include "dct4/access.h"

namespace xfm::dct4 {

template <class P>
struct Kernels {
  using Real = typename P::Real;

  // Whole transforms up to P::kLastDirect; x and y may be one array.
  static void straight2(const Real* x, Real* y);
  static void straight4(const Real* x, Real* y);
  static void straight8(const Real* x, Real* y);
  static void straight16(const Real* x, Real* y);
  static void straight32(const Real* x, Real* y);
  static void straight64(const Real* x, Real* y);

  // Odd real transforms of columns: samples a step apart, bin g to the rows 2g and 2g+1 of y.
  static void forward8(const Columns<Real>& x, ptrdiff_t step, Real* y, ptrdiff_t stride);
  static void forward16(const Columns<Real>& x, ptrdiff_t step, Real* y, ptrdiff_t stride);
  static void forward32(const Columns<Real>& x, ptrdiff_t step, Real* y, ptrdiff_t stride);
  static void forward64(const Columns<Real>& x, ptrdiff_t step, Real* y, ptrdiff_t stride);

  // Twiddles and synthesis of V groups of 2d, d at least V: output u = 0 .. d-1 to rising + u*step, u = -1 .. -d to
  // falling - (2d+u)*step.
  static void synthesis8(const Real* t, const Real* table, const Upward<Real>& rising,
                         const Downward<Real>& falling, ptrdiff_t step);
  static void synthesis16(const Real* t, const Real* table, const Upward<Real>& rising,
                          const Downward<Real>& falling, ptrdiff_t step);
  static void synthesis32(const Real* t, const Real* table, const Upward<Real>& rising,
                          const Downward<Real>& falling, ptrdiff_t step);
  static void synthesis64(const Real* t, const Real* table, const Upward<Real>& rising,
                          const Downward<Real>& falling, ptrdiff_t step);

  // One h of a combining step: parts of V columns from rows of w, bins f < d'/2 to rising + f*step, the others,
  // conjugated, to falling; imaginary parts a stride on.
  static void combine8(const Real* w, ptrdiff_t row, const Real* inner, const Real* outer, Real* rising, Real* falling,
                       ptrdiff_t stride, ptrdiff_t step);
  static void combine16(const Real* w, ptrdiff_t row, const Real* inner, const Real* outer, Real* rising, Real* falling,
                        ptrdiff_t stride, ptrdiff_t step);
  static void combine32(const Real* w, ptrdiff_t row, const Real* inner, const Real* outer, Real* rising, Real* falling,
                        ptrdiff_t stride, ptrdiff_t step);
};

template <class Real>
using ForwardKernel = void(const Columns<Real>&, ptrdiff_t, Real*, ptrdiff_t);
template <class Real>
using SynthesisKernel = void(const Real*, const Real*, const Upward<Real>&, const Downward<Real>&, ptrdiff_t);
template <class Real>
using CombineKernel = void(const Real*, ptrdiff_t, const Real*, const Real*, Real*, Real*, ptrdiff_t, ptrdiff_t);

}  // namespace xfm::dct4
