// What the benchmarks share: timing of contestants in interleaved rounds, the processor's clock, means of ratios.
//
// A contestant repeats its call `count` times. Each round runs every contestant once, in a new order, on warm caches, long
// enough for the clock's grain and short enough that what else the machine does falls between the measurements; a
// figure is the median over the rounds. Only figures of one race compare: machines change their pace by several percent
// within minutes.
#pragma once

#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace xfm::bench {

using Calls = std::function<void(long count)>;

struct Pace {
  int rounds = 41;
  double microseconds = 40;  // of one measurement
};

struct Race {
  std::vector<double> ns;   // of one call of each contestant
  double ns_per_cycle = 0;  // in the same rounds
};

// `title` names the race beside its progress.
Race race(const std::string& title, const std::vector<Calls>& contestants, const Pace& pace);

class GeometricMean {
 public:
  void add(double ratio) { sum_ += std::log(ratio), ++count_; }
  double value() const { return std::exp(sum_ / count_); }
  int count() const { return count_; }

 private:
  double sum_ = 0;
  int count_ = 0;
};

// Bytes at a page's start. Arrays laid out in them stand a few lines apart, so that those of a page's length share no address
// modulo a page unless it is asked for.
class Memory {
 public:
  explicit Memory(size_t bytes);
  // The next array, `offset` bytes behind an address divisible by `alignment`.
  template <class T>
  T* array(size_t count, size_t offset = 0, size_t alignment = 64) {
    return reinterpret_cast<T*>(take(count * sizeof(T), offset, alignment));
  }

 private:
  unsigned char* take(size_t bytes, size_t offset, size_t alignment);

  static constexpr size_t kGap = 5 * 64, kArrays = 8;  // so many at most
  struct Free {
    void operator()(unsigned char* p) const;
  };
  std::unique_ptr<unsigned char, Free> data_;
  size_t size_, used_ = 0;
};

}  // namespace xfm::bench
