#include "bench/dct4_rival.h"

#include <cmath>
#include <numbers>

#include "bench/dct4_passes.h"

namespace xfm::bench {

template <class T>
HalfLength<T>::HalfLength(int n)
    : half_(n / 2),
      memory_(2 * (n * sizeof(T) + 64)),
      w_(memory_.array<T>(n)),
      z_(memory_.array<T>(n)),
      plan_(Fftw<T>::get().plan_dft_1d(half_, reinterpret_cast<typename Fftw<T>::Complex*>(z_),
                                       reinterpret_cast<typename Fftw<T>::Complex*>(z_), kFftwForward, kFftwMeasure)) {
  for (int k = 0; k < half_; ++k) {
    const double angle = -std::numbers::pi * (8.0 * k + 1) / (8.0 * n);
    w_[2 * k] = static_cast<T>(std::cos(angle));
    w_[2 * k + 1] = static_cast<T>(std::sin(angle));
  }
}

template <class T>
bool HalfLength<T>::runs_here() {
  return fftw_installed() && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

template <class T>
void HalfLength<T>::run(const T* x, T* y) const {
  twist_in(x, w_, z_, half_);
  plan_.run();
  twist_out(z_, w_, y, half_);
}

template class HalfLength<float>;
template class HalfLength<double>;

}  // namespace xfm::bench
