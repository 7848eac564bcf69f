#include "bench/dct4_passes.h"

// Compiled for AVX2 and FMA, as fast as the compiler makes them: nothing of the standard library may come into being here,
// for it could be taken for the whole program.
namespace xfm::bench {

namespace {

template <class T>
void in(const T* x, const T* w, T* z, int half) {
  const int last = 2 * half - 1;
  for (int k = 0; k < half; ++k) {
    const T a = x[2 * k], b = x[last - 2 * k], c = w[2 * k], s = w[2 * k + 1];
    z[2 * k] = a * c - b * s;
    z[2 * k + 1] = a * s + b * c;
  }
}

template <class T>
void out(const T* z, const T* w, T* y, int half) {
  const int last = 2 * half - 1;
  for (int k = 0; k < half; ++k) {
    const T a = z[2 * k], b = z[2 * k + 1], c = w[2 * k], s = w[2 * k + 1];
    y[2 * k] = a * c - b * s;
    y[last - 2 * k] = -(a * s + b * c);
  }
}

}  // namespace

void twist_in(const float* x, const float* w, float* z, int half) { in(x, w, z, half); }
void twist_in(const double* x, const double* w, double* z, int half) { in(x, w, z, half); }
void twist_out(const float* z, const float* w, float* y, int half) { out(z, w, y, half); }
void twist_out(const double* z, const double* w, double* y, int half) { out(z, w, y, half); }

}  // namespace xfm::bench
