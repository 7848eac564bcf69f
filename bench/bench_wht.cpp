// Time of the Walsh-Hadamard kernels, one thread, data in cache, the caller's buffer:
//
//   bench_wht [rounds, 41] [milliseconds per measurement, 2] [alignment, 64]
//
// against FFTW's real transform of size 2 in `order` dimensions (unscaled), a plain loop over 256-bit registers in the
// same order of levels, and two floors (wht_floors.tsv, by the clock of the same rounds). Rounds are interleaved; a figure is the median over the
// rounds in nanoseconds per transform. The results of both rivals are compared with the library's
// before any timing. The floors leave out what a call costs; the first line says it. An alignment of 4096 puts all
// arrays at the start of a page, where the same elements compete for the same sets of the first-level cache.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/harness.h"
#include "bench/wht_rivals.h"
#include "generator/table.h"
#include "xfm.h"

namespace {

using namespace xfm::bench;

constexpr int kOrders = 13;

template <class T>
struct Api;

template <>
struct Api<float> {
  static constexpr const char* kName = "32f";
  using Small = XfmStatus(const float*, float*, int);
  static constexpr Small* kSmall[] = {xfmgWHT_1_32f, xfmgWHT_2_32f, xfmgWHT_3_32f, xfmgWHT_4_32f,
                                      xfmgWHT_5_32f, xfmgWHT_6_32f, xfmgWHT_7_32f};
  using Large = XfmStatus(const float*, float*, int, void*);
  static constexpr Large* kLarge[] = {xfmgWHT_8_32f,  xfmgWHT_9_32f,  xfmgWHT_10_32f,
                                      xfmgWHT_11_32f, xfmgWHT_12_32f, xfmgWHT_13_32f};
};

template <>
struct Api<double> {
  static constexpr const char* kName = "64f";
  using Small = XfmStatus(const double*, double*, int);
  static constexpr Small* kSmall[] = {xfmgWHT_1_64f, xfmgWHT_2_64f, xfmgWHT_3_64f, xfmgWHT_4_64f,
                                      xfmgWHT_5_64f, xfmgWHT_6_64f, xfmgWHT_7_64f};
  using Large = XfmStatus(const double*, double*, int, void*);
  static constexpr Large* kLarge[] = {xfmgWHT_8_64f,  xfmgWHT_9_64f,  xfmgWHT_10_64f,
                                      xfmgWHT_11_64f, xfmgWHT_12_64f, xfmgWHT_13_64f};
};

template <class T>
struct Arrays {
  explicit Arrays(size_t alignment) {
    const size_t bytes = (sizeof(T) << kOrders) + 8192;  // the largest work buffer
    for (T** p : {&src, &dst, &other, &buffer})
      *p = static_cast<T*>(aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment));
  }
  ~Arrays() {
    for (T* p : {src, dst, other, buffer}) free(p);
  }
  Arrays(const Arrays&) = delete;

  T *src, *dst, *other, *buffer;
};

[[noreturn]] void disagree(const char* rival, const char* type, int order) {
  std::fprintf(stderr, "%s and the library differ at order %d, %s\n", rival, order, type);
  std::exit(1);
}

template <class T>
void compare(Arrays<T>& a, const Calls& library, int order, const FftwHadamard<T>& fftw) {
  const size_t length = size_t{1} << order;
  library(1);
  loop_hadamard(a.src, a.other, order, T(1));
  if (std::memcmp(a.dst, a.other, length * sizeof(T)) != 0) disagree("the loop", Api<T>::kName, order);
  fftw.run();
  for (size_t i = 0; i < length; ++i)
    if (std::abs(a.dst[i] - a.other[i]) > 1e-4 * std::sqrt(double(length))) disagree("FFTW", Api<T>::kName, order);
}

template <class T>
Race measure(Arrays<T>& a, int order, const Pace& pace) {
  const FftwHadamard<T> fftw(a.src, a.other, order);
  std::mt19937 random(order);
  std::uniform_real_distribution<T> uniform(-1, 1);
  for (int i = 0; i < 1 << order; ++i) a.src[i] = uniform(random);  // after planning, which overwrites
  // The flag and the order come from memory so that no contestant is specialised.
  volatile int flag = xfmScaleNone, levels = order;
  const Calls library = [&](long count) {
    if (order <= 7) {
      auto* const kernel = Api<T>::kSmall[order - 1];
      for (const int f = flag; count > 0; --count) kernel(a.src, a.dst, f);
    } else {
      auto* const kernel = Api<T>::kLarge[order - 8];
      for (const int f = flag; count > 0; --count) kernel(a.src, a.dst, f, a.buffer);
    }
  };
  compare(a, library, order, fftw);
  return race({library, [&](long count) { for (; count > 0; --count) fftw.run(); },
               [&](long count) { for (const int l = levels; count > 0; --count) loop_hadamard(a.src, a.other, l, T(1)); }},
              pace);
}

// Ratios to the floor, FFTW and the loop.
class Means {
 public:
  void add(const std::vector<double>& ratios) {
    for (size_t i = 0; i < ratios.size(); ++i) means_[i].add(ratios[i]);
  }
  void print(const char* title) const {
    std::printf("%s, geometric means: times the floor %.3f, of FFTW %.3f, of the loop %.3f\n", title, means_[0].value(),
                means_[1].value(), means_[2].value());
  }

 private:
  GeometricMean means_[3];
};

template <class T>
void bench(const Pace& pace, size_t alignment, Means& all) {
  Arrays<T> arrays(alignment);
  Means means, vectors;
  const xfm::Table floors = xfm::Table::read(XFM_WHT_FLOORS, {"type", "order", "limit", "free"});
  for (const xfm::TableRow& row : floors.rows()) {
    if (row["type"] != Api<T>::kName) continue;
    const auto [ns, ns_per_cycle] = measure(arrays, row.integer("order"), pace);
    const double limit = std::stod(row["limit"]) * ns_per_cycle, free = std::stod(row["free"]) * ns_per_cycle;
    std::printf("%s %5d %10.2f %10.2f %10.2f %10.2f %10.2f %8.3f %8.3f %8.3f\n", Api<T>::kName, row.integer("order"),
                ns[0], ns[1], ns[2], limit, free, ns[0] / limit, ns[0] / ns[1], ns[0] / ns[2]);
    std::fflush(stdout);
    const std::vector<double> ratios = {ns[0] / limit, ns[0] / ns[1], ns[0] / ns[2]};
    means.add(ratios);
    if (row.integer("order") >= 4) vectors.add(ratios);
    all.add(ratios);
  }
  means.print(Api<T>::kName);
  vectors.print((std::string(Api<T>::kName) + " from order 4 on").c_str());
}

// A function of the library that returns at once.
double call_alone(const Pace& pace) {
  volatile int order = 0;
  int size = 0;
  return race({[&](long count) { for (const int o = order; count > 0; --count) xfmgWHTGetBufferSize_32f(o, &size); }},
              pace).ns[0];
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 41;
  const double milliseconds = argc > 2 ? std::atof(argv[2]) : 2.0;
  const size_t alignment = argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 64;
  if (rounds < 1 || milliseconds <= 0 || alignment < 32 || (alignment & (alignment - 1)) != 0) {
    std::fprintf(stderr, "usage: bench_wht [rounds] [milliseconds per measurement] [alignment, a power of two from 32 on]\n");
    return 1;
  }
  const Pace pace = {.rounds = rounds, .microseconds = 1000 * milliseconds};
  std::printf("a call that returns at once: %.2f ns\n", call_alone(pace));
  std::printf("type order  this [ns]  FFTW [ns]  loop [ns] floor [ns]  free [ns]  x floor   x FFTW   x loop\n");
  Means all;
  bench<float>(pace, alignment, all);
  bench<double>(pace, alignment, all);
  all.print("both");
  return 0;
}
