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

#include "xfm.h"

namespace test_arrays {

inline constexpr int kFlags[] = {xfmScaleNone, xfmScaleBySqrtN, xfmScaleFwdByN, xfmScaleInvByN};

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

// Pages between two unreadable ones, filled.
class GuardedPages {
 public:
  explicit GuardedPages(size_t bytes, unsigned char fill = 0xff)
      : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))), inner_((bytes + page_ - 1) / page_ * page_) {
    base_ = static_cast<unsigned char*>(mmap(nullptr, inner_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (base_ == MAP_FAILED) throw std::runtime_error("mmap");
    protect(PROT_READ | PROT_WRITE);
    std::memset(first(), fill, inner_);
  }
  ~GuardedPages() { munmap(base_, inner_ + 2 * page_); }
  GuardedPages(const GuardedPages&) = delete;

  unsigned char* first() const { return base_ + page_; }
  unsigned char* last() const { return first() + inner_; }  // behind the last
  unsigned char* at_end(size_t bytes) const { return last() - bytes; }
  void forbid_writing() const { protect(PROT_READ); }
  // Elements flush with the end of the pages, or with their beginning.
  template <class T>
  T* array(size_t count, bool at_end) const {
    return reinterpret_cast<T*>(at_end ? last() - count * sizeof(T) : first());
  }

 private:
  void protect(int access) const {
    if (inner_ > 0 && mprotect(first(), inner_, access) != 0) throw std::runtime_error("mprotect");
  }

  size_t page_, inner_;
  unsigned char* base_;
};

// An array that ends, or begins, at an unreadable page; the rest of its pages is filled and can be checked.
template <class T>
class Guarded {
 public:
  enum class At { Begin, End };

  Guarded(int count, At at, int shift = 0)
      : count_(count), pages_(std::max<size_t>((count + shift) * sizeof(T), 1), kFill),
        data_(pages_.array<T>(count, at == At::End) + (at == At::Begin ? shift : -shift)) {}

  T* data() { return data_; }
  std::vector<T> values() const { return {data_, data_ + count_}; }
  void fill(const std::vector<T>& values) { std::copy(values.begin(), values.end(), data_); }
  void protect() { pages_.forbid_writing(); }
  // The pages around the array are as they were.
  bool clean_around() const {
    const auto* const first = reinterpret_cast<const unsigned char*>(data_);
    const auto* const last = reinterpret_cast<const unsigned char*>(data_ + count_);
    const auto filled = [](unsigned char byte) { return byte == kFill; };
    return std::all_of<const unsigned char*>(pages_.first(), first, filled) && std::all_of<const unsigned char*>(last, pages_.last(), filled);
  }

 private:
  static constexpr unsigned char kFill = 0x5a;
  int count_;
  GuardedPages pages_;
  T* data_;
};

}  // namespace test_arrays
