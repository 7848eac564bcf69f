// Data of the tests: seeded values, their bits, and arrays between unreadable pages.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <random>
#include <stdexcept>
#include <vector>

namespace test_arrays {

// Uniform in [-1, 1], the same for the same seed.
template <class T>
std::vector<T> random_values(int count, unsigned seed) {
  std::mt19937 engine(seed);
  std::vector<T> values(count);
  for (T& v : values) v = static_cast<T>(static_cast<double>(engine()) / 2147483648.0 - 1.0);
  return values;
}

template <class T>
auto bits(T value) {
  if constexpr (sizeof(T) == 4) return std::bit_cast<uint32_t>(value);
  else return std::bit_cast<uint64_t>(value);
}

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// An array that ends, or begins, at an unreadable page; the rest of its own page is filled and can be checked.
template <class T>
class Guarded {
 public:
  enum class At { Begin, End };

  Guarded(int count, At at, int shift = 0) : count_(count), page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    base_ = static_cast<unsigned char*>(mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (base_ == MAP_FAILED) throw std::runtime_error("mmap");
    if (mprotect(base_ + page_, page_, PROT_READ | PROT_WRITE) != 0) throw std::runtime_error("mprotect");
    std::memset(base_ + page_, kFill, page_);
    data_ = reinterpret_cast<T*>(at == At::Begin ? base_ + page_ : base_ + 2 * page_ - count * sizeof(T)) +
            (at == At::Begin ? shift : -shift);
  }
  ~Guarded() { munmap(base_, 3 * page_); }
  Guarded(const Guarded&) = delete;

  T* data() { return data_; }
  std::vector<T> values() const { return {data_, data_ + count_}; }
  void fill(const std::vector<T>& values) { std::copy(values.begin(), values.end(), data_); }
  void protect() { mprotect(base_ + page_, page_, PROT_READ); }
  // The page around the array is as it was.
  bool clean_around() const {
    for (const unsigned char* p = base_ + page_; p < base_ + 2 * page_; ++p)
      if ((p < reinterpret_cast<unsigned char*>(data_) || p >= reinterpret_cast<unsigned char*>(data_ + count_)) && *p != kFill)
        return false;
    return true;
  }

 private:
  static constexpr unsigned char kFill = 0x5a;
  int count_;
  size_t page_;
  unsigned char* base_;
  T* data_;
};

}  // namespace test_arrays
