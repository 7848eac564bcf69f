// From which sizes on the stages depart from the plain order of their loops, all by measurement; docs/dct4.md tells what
// each departure brings. With XFM_DCT4_PLAIN_ORDER no stage departs: the tests compare the two, bit for bit.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace xfm::dct4 {
namespace {

constexpr ptrdiff_t quick_from(ptrdiff_t size) {
#ifdef XFM_DCT4_PLAIN_ORDER
  (void)size;
  return PTRDIFF_MAX;
#else
  return size;
#endif
}

// Distances of rows in bytes. Rows a multiple of 4096 bytes apart share the sets of the first cache, which hurts most
// where every row of a scratch is written by halves.
constexpr ptrdiff_t kFarApart = quick_from(16384), kFarApartBins = quick_from(4096), kSameSets = 4096;
// A kernel that writes so many rows always writes to the buffer: its addresses are constants then. Addresses worked out at
// run time take registers and issue slots and cost more than the copy.
constexpr ptrdiff_t kManyRows = quick_from(32);

// From this size of the result on, in bytes, stages 1 and 2 take turns; below, the second cache holds so much of all
// arrays that shorter runs gain nothing.
constexpr ptrdiff_t kTurns = quick_from(1 << 19);
// What is read from so large an array is fetched while kernels compute on what was read before; else the farther caches
// would be idle meanwhile.
constexpr ptrdiff_t kFetched = quick_from(1 << 19);
// Vectors of groups that stage 2 takes together: 128 bytes of a row. Where the stages take turns, stage 1 makes as many in
// each stretch of bins, 256 KB in all, so that the second cache still holds them.
constexpr ptrdiff_t kTogether = 4;
// From this size of an array on, its rows are written past the caches: they would push out what is still to be read
// before anybody reads them, and a line written whole need not be fetched first. Chosen by transforms whose result is
// read by the next one.
constexpr ptrdiff_t kPastCaches = quick_from(1 << 21);
constexpr uintptr_t kLine = 64;

template <class Real>
constexpr ptrdiff_t bytes_of(ptrdiff_t elements) {
  return elements * static_cast<ptrdiff_t>(sizeof(Real));
}

// Whether rows so many elements apart go through a buffer.
template <class Real>
inline bool far_apart(ptrdiff_t elements) {
  return bytes_of<Real>(elements) >= kFarApart && bytes_of<Real>(elements) % kSameSets == 0;
}

template <class Real>
inline bool past_caches(const Real* first_row, ptrdiff_t elements) {
  return bytes_of<Real>(elements) >= kPastCaches && reinterpret_cast<uintptr_t>(first_row) % kLine == 0;
}

template <class Real>
inline bool is_fetched(ptrdiff_t elements) {
  return bytes_of<Real>(elements) >= kFetched;
}

template <class Real>
inline bool takes_turns(ptrdiff_t elements) {
  return bytes_of<Real>(elements) >= kTurns;
}

}  // namespace
}  // namespace xfm::dct4
