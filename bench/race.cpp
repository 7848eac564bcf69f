#include "bench/race.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <numeric>
#include <random>

#include "generator/check.h"
#include "tool/progress.h"

namespace xfm::bench {

namespace {

double ns_of(const Calls& calls, long count) {
  const auto start = std::chrono::steady_clock::now();
  calls(count);
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

// As many calls as take about that long; the quickest of a few tries decides, for others may be running.
long calls_within(const Calls& calls, double ns) {
  for (long count = 1;; count *= 2) {
    double least = ns_of(calls, count);
    for (int i = 0; i < 4; ++i) least = std::min(least, ns_of(calls, count));
    if (least > ns / 8) return std::max(1L, static_cast<long>(static_cast<double>(count) * ns / least));
  }
}

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<long>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Dependent additions, one a cycle; each call is a hundred of them.
constexpr int kChain = 100;
void chain(long count) {
  unsigned long sum = 1, step = 3;
  for (; count > 0; --count)
    asm volatile(".rept 100\n\tadd %1, %0\n\t.endr" : "+r"(sum) : "r"(step));
}

}  // namespace

Race race(const std::string& title, const std::vector<Calls>& contestants, const Pace& pace) {
  std::vector<Calls> runners = contestants;
  runners.push_back(chain);
  const double ns = 1000 * pace.microseconds;
  std::vector<long> counts;
  tool::Progress progress(title, (pace.rounds + 1.0) * static_cast<double>(runners.size()));
  for (const Calls& r : runners) counts.push_back(calls_within(r, ns)), progress.advance();

  std::vector<std::vector<double>> times(runners.size());
  std::vector<size_t> order(runners.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::mt19937 engine(1);
  for (int round = 0; round < pace.rounds; ++round) {
    std::shuffle(order.begin(), order.end(), engine);
    for (const size_t i : order) {
      runners[i](counts[i] / 8 + 1);
      times[i].push_back(ns_of(runners[i], counts[i]) / static_cast<double>(counts[i]));
      progress.advance();
    }
  }
  Race result;
  for (std::vector<double>& t : times) result.ns.push_back(median(t));
  result.ns_per_cycle = result.ns.back() / kChain;
  result.ns.pop_back();
  return result;
}

Memory::Memory(size_t bytes) : size_((bytes + kArrays * kGap + 4095) / 4096 * 4096) {
  data_.reset(static_cast<unsigned char*>(std::aligned_alloc(4096, size_)));
  if (data_ == nullptr) throw std::bad_alloc();
  std::memset(data_.get(), 0, size_);
}

void Memory::Free::operator()(unsigned char* p) const { std::free(p); }

unsigned char* Memory::take(size_t bytes, size_t offset, size_t alignment) {
  const size_t first = (used_ + alignment - 1) / alignment * alignment + offset;
  unsigned char* const start = data_.get() + first;
  used_ = first + bytes + kGap;
  check(used_ <= size_, "the arrays of a benchmark need more memory than was asked for");
  return start;
}

}  // namespace xfm::bench
