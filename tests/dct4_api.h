// The DCT-IV planned in a block of its own, and a reference for it.
#pragma once

#include <quadmath.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "dct4/objects.h"
#include "dct4/public_api.h"
#include "tests/arrays.h"

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
std::vector<T> noise(int n) {
  return test_arrays::random_values<T>(n, 1 + static_cast<unsigned>(n));
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

template <class Env>
const Env* first_of(const xfm::dct4::EnvList* stage) {
  return static_cast<const Env*>(EnvList_get(stage, 0));
}

// Every env7 of a planned tree, from the top.
template <class T>
std::vector<const xfm::dct4::Env7*> splits_of(const Planned<T>& plan) {
  using namespace xfm::dct4;
  std::vector<const Env7*> found;
  if (plan.root()->scratch == nullptr) return found;
  const auto* split = first_of<Env7>(first_of<Env5>(first_of<Env3>(plan.root()->stageTwo)->stageOne)->stageOne);
  for (; split != nullptr; split = first_of<Env7>(first_of<Env9>(split->stageTwo)->stageOne)) found.push_back(split);
  return found;
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
