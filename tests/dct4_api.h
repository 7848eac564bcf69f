// The DCT-IV planned in a block of its own, and a reference for it.
#pragma once

#include <quadmath.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "dct4/objects.h"
#include "dct4/public_api.h"

using xfm::dct4::Api;

// A state in a block of exactly the size asked for, `shift` bytes off a 64-byte boundary.
template <class T>
class Planned {
 public:
  explicit Planned(int n, int shift = 0) : length(n) {
    size_status = Api<T>::size(n, &bytes);
    memory.resize(static_cast<size_t>(bytes) + 64 + shift);
    const uintptr_t start = (reinterpret_cast<uintptr_t>(memory.data()) + 63) / 64 * 64 + shift;
    block = reinterpret_cast<unsigned char*>(start);
    status = size_status == xfmStatusOk ? Api<T>::init(&state, n, block) : size_status;
  }
  xfm::dct4::Env1* root() const { return reinterpret_cast<xfm::dct4::Env1*>(state); }
  uintptr_t head() const { return reinterpret_cast<const xfm::dct4::Arena*>(block)->head; }
  std::vector<T> operator()(const std::vector<T>& x) const {
    std::vector<T> y(x.size());
    Api<T>::transform(x.data(), y.data(), state);
    return y;
  }

  int length, bytes = 0;
  std::vector<unsigned char> memory;
  unsigned char* block = nullptr;
  XfmStatus size_status = 0, status = 0;
  typename Api<T>::State* state = nullptr;
};

template <class T>
std::vector<T> noise(int n, unsigned seed = 1) {
  std::mt19937 random(seed + static_cast<unsigned>(n));
  std::normal_distribution<double> normal;
  std::vector<T> x(n);
  for (T& v : x) v = static_cast<T>(normal(random));
  return x;
}

// One bin in 113-bit arithmetic; the cosines by recurrence, whose error stays below 1e-20 for all lengths.
template <class T>
__float128 exact_bin(const std::vector<T>& x, int64_t k) {
  const __float128 theta = M_PIq * (2 * k + 1) / (2 * static_cast<int64_t>(x.size()));  // pi/n (k + 1/2)
  __float128 now = cosq(theta / 2), before = now, sum = 0;
  const __float128 twice = 2 * cosq(theta);
  for (T v : x) {
    sum += v * now;
    const __float128 next = twice * now - before;
    before = now;
    now = next;
  }
  return sum;
}

// Relative error in the 2-norm over up to `most` bins, spread over all lanes and rows.
template <class T>
double relative_error(const std::vector<T>& x, const std::vector<T>& y, int most) {
  const int64_t n = static_cast<int64_t>(x.size()), bins = n < most ? n : most;
  double square = 0, norm = 0;
  for (int64_t i = 0; i < bins; ++i) {
    const int64_t k = n <= most ? i : (i * n / bins + i * 37) % n;
    const __float128 exact = exact_bin(x, k), error = y[k] - exact;
    square += static_cast<double>(error * error);
    norm += static_cast<double>(exact * exact);
  }
  return std::sqrt(square / norm);
}
