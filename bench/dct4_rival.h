// A rival of the DCT-IV: FFTW's complex transform of n/2 points between two twiddle passes,
//   z[k] = (x[2k] + i x[n-1-2k]) w[k],  Z = DFT(z),  y[2k] - i y[n-1-2k] = Z[k] w[k],  w[k] = exp(-i pi (8k+1)/(8n)).
#pragma once

#include "bench/fftw.h"
#include "bench/race.h"

namespace xfm::bench {

template <class T>
class HalfLength {
 public:
  // Its passes are compiled for AVX2.
  static bool runs_here();

  explicit HalfLength(int n);
  void run(const T* x, T* y) const;

 private:
  int half_;
  Memory memory_;
  T *w_, *z_;  // complex
  FftwPlan<T> plan_;
};

}  // namespace xfm::bench
