// What the Walsh-Hadamard tests share: the kernels by order, the level order as a model, guarded memory, the allocator
// that stands in for the core library's.
#pragma once

#include <dlfcn.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/arrays.h"
#include "tests/scale.h"
#include "xfm.h"

namespace xfm::test {

using test_arrays::GuardedPages;

inline constexpr int kOrders = 13, kFirstBuffered = 8;
using test_arrays::kFlags;

template <class T>
constexpr const char* type_name() { return sizeof(T) == 4 ? "32f" : "64f"; }

inline void* library_symbol(const std::string& name) {
  void* address = dlsym(RTLD_DEFAULT, name.c_str());
  if (address == nullptr) {
    std::fprintf(stderr, "no function %s\n", name.c_str());
    std::abort();
  }
  return address;
}

// Bytes of the work buffer as the library says them; SizesByOrder holds them to the manual.
template <class T>
int buffer_bytes(int order) {
  int size = -1;
  reinterpret_cast<XfmStatus (*)(int, int*)>(library_symbol(std::string("xfmgWHTGetBufferSize_") + type_name<T>()))(order, &size);
  return size;
}

// Kernels below order 8 ignore a fourth argument, as they do behind the dispatcher.
template <class T>
using Kernel = XfmStatus(const T*, T*, int, void*);
template <class T>
Kernel<T>* kernel(int order) {
  return reinterpret_cast<Kernel<T>*>(library_symbol("xfmgWHT_" + std::to_string(order) + "_" + type_name<T>()));
}

template <class T>
T scale_of(int flag, int order) {
  return test_scale::scale_of<T>(ScaleRule::SelfInverse, flag, 1 << order);
}

// Level by level, stride 1 first: a + b and a - b in the type itself; then the scale.
template <class T>
std::vector<T> level_model(std::vector<T> values, T scale) {
  for (size_t stride = 1; stride < values.size(); stride *= 2)
    for (size_t i = 0; i < values.size(); ++i)
      if (!(i & stride)) {
        const T a = values[i], b = values[i + stride];
        values[i] = a + b;
        values[i + stride] = a - b;
      }
  for (T& v : values) v *= scale;
  return values;
}

// Magnitudes over a wide range, so that any other order of additions rounds elsewhere; some zeros of either sign.
template <class T>
std::vector<T> rough_values(int order, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<T> mantissa(-1, 1);
  std::uniform_int_distribution<int> exponent(-12, 12);
  std::vector<T> values(size_t{1} << order);
  for (T& v : values) v = std::ldexp(mantissa(random), exponent(random));
  values[0] = -0.0f;
  if (order > 4) values[3] = 0, values[5] = -0.0f;
  return values;
}

// Calls of xfmMalloc and xfmFree since the last reset. Blocks end at an unreadable page and are aligned to 16 bytes.
struct AllocatorLog {
  std::vector<int> sizes;
  std::vector<void*> blocks, freed;
  bool no_memory = false;  // xfmMalloc gives null
  void reset() { *this = {}; }
};
extern AllocatorLog allocator_log;

}  // namespace xfm::test
