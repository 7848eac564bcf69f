// FFTW's plans for one transform of the complex, real and Hartley families.
#pragma once

#include <string>

#include "bench/fftw.h"

namespace xfm::bench {

enum class Transform { ComplexForward, ComplexInverse, RealForward, RealInverse, Hartley };
enum class Effort { Measure, Patient };

// A plan from `in` to `out`, made for their alignment.
template <class T>
class DftRival {
 public:
  // `kind` 0 is the plan whose data stand as in the library's (r2c and c2r for CCS); 1, for real transforms only, that
  // of FFTW's own half-complex layout. Planning overwrites both arrays; execution may overwrite `in`.
  DftRival(Transform transform, int kind, int n, T* in, T* out, Effort effort);
  void run(long count) const { plan_.run(count); }
  const std::string& name() const { return name_; }

  static int kinds(Transform transform) { return transform == Transform::RealForward || transform == Transform::RealInverse ? 2 : 1; }

 private:
  std::string name_;
  FftwPlan<T> plan_;
};

}  // namespace xfm::bench
