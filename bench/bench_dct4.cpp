// Time of the DCT-IV against FFTW, all powers of two, one thread:
//
//   bench_dct4 [last exponent, 22] [rounds, 15] [first exponent, 1]
//
// Rivals, in the same run: FFTW's own DCT-IV (REDFT11), and FFTW's complex transform of n/2 points between two twiddle
// passes,
//   z[k] = (x[2k] + i x[n-1-2k]) w[k],  Z = DFT(z),  y[2k] - i y[n-1-2k] = Z[k] w[k],  w[k] = exp(-i pi (8k+1)/(8n)).
// Rounds are interleaved and every measurement begins with a call that isn't timed, so that the caches hold what the
// contestant uses; a figure is the median over the rounds in nanoseconds per transform.
#include <fftw3.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <complex>
#include <functional>
#include <random>
#include <vector>

#include "bench/harness.h"
#include "dct4/public_api.h"

namespace {

using xfm::dct4::Api;

template <class T>
struct Fftw;

template <>
struct Fftw<float> {
  using Plan = fftwf_plan;
  static constexpr auto plan_dct = fftwf_plan_r2r_1d;
  static Plan plan_dft(int n, std::complex<float>* data, unsigned flags) {
    auto* p = reinterpret_cast<fftwf_complex*>(data);
    return fftwf_plan_dft_1d(n, p, p, FFTW_FORWARD, flags);
  }
  static constexpr auto execute = fftwf_execute;
  static constexpr auto destroy = fftwf_destroy_plan;
  static constexpr auto limit = fftwf_set_timelimit;
};

template <>
struct Fftw<double> {
  using Plan = fftw_plan;
  static constexpr auto plan_dct = fftw_plan_r2r_1d;
  static Plan plan_dft(int n, std::complex<double>* data, unsigned flags) {
    auto* p = reinterpret_cast<fftw_complex*>(data);
    return fftw_plan_dft_1d(n, p, p, FFTW_FORWARD, flags);
  }
  static constexpr auto execute = fftw_execute;
  static constexpr auto destroy = fftw_destroy_plan;
  static constexpr auto limit = fftw_set_timelimit;
};

// Memory that both libraries find well aligned.
template <class T>
struct Array {
  explicit Array(size_t n) : data(static_cast<T*>(aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64))) {
    std::fill(data, data + n, T{});
  }
  ~Array() { free(data); }
  Array(const Array&) = delete;
  T* data;
};

template <class T>
class HalfLength {
 public:
  explicit HalfLength(int n) : h_(n / 2), w_(h_), z_(h_) {
    plan_ = Fftw<T>::plan_dft(h_, z_.data, FFTW_MEASURE);
    for (int k = 0; k < h_; ++k) {
      const double angle = -M_PI * (8.0 * k + 1) / (8.0 * n);
      w_.data[k] = {static_cast<T>(cos(angle)), static_cast<T>(sin(angle))};
    }
  }
  ~HalfLength() { Fftw<T>::destroy(plan_); }

  void run(const T* x, T* y) {
    T* const z = reinterpret_cast<T*>(z_.data);
    const T* const w = reinterpret_cast<const T*>(w_.data);
    const int last = 2 * h_ - 1;
    for (int k = 0; k < h_; ++k) {
      const T a = x[2 * k], b = x[last - 2 * k], c = w[2 * k], s = w[2 * k + 1];
      z[2 * k] = a * c - b * s;
      z[2 * k + 1] = a * s + b * c;
    }
    Fftw<T>::execute(plan_);
    for (int k = 0; k < h_; ++k) {
      const T a = z[2 * k], b = z[2 * k + 1], c = w[2 * k], s = w[2 * k + 1];
      y[2 * k] = a * c - b * s;
      y[last - 2 * k] = -(a * s + b * c);
    }
  }

 private:
  int h_;
  Array<std::complex<T>> w_, z_;
  typename Fftw<T>::Plan plan_;
};

template <class T>
double difference(const T* a, const T* b, int n) {
  double square = 0, norm = 0;
  for (int i = 0; i < n; ++i) {
    square += (double(a[i]) - b[i]) * (double(a[i]) - b[i]);
    norm += double(b[i]) * b[i];
  }
  return sqrt(square / norm);
}

struct Means {
  xfm::bench::GeometricMean half, dct;
  double slowest = 0;
};

xfm::bench::Calls repeated(const std::function<void()>& call) {
  return [call](long count) {
    for (; count > 0; --count) call();
  };
}

template <class T>
void measure(int n, int rounds, Means& means) {
  Array<T> x(n), y(n), r(n), p(n), q(n);
  typename Api<T>::State* state = nullptr;
  if (Api<T>::init_alloc(&state, n) != xfmStatusOk) exit(1);
  HalfLength<T> half(n);
  const auto dct = Fftw<T>::plan_dct(n, p.data, q.data, FFTW_REDFT11, FFTW_MEASURE);
  std::mt19937 random(n);
  std::normal_distribution<double> normal;
  for (int i = 0; i < n; ++i) x.data[i] = p.data[i] = static_cast<T>(normal(random));

  const std::function<void()> calls[] = {[&] { Api<T>::transform(x.data, y.data, state); }, [&] { half.run(x.data, r.data); },
                                         [&] { Fftw<T>::execute(dct); }};
  for (const auto& call : calls) call();
  for (int i = 0; i < n; ++i) q.data[i] /= 2;  // FFTW's sum has a factor of two
  const double tolerance = sizeof(T) == 4 ? 1e-5 : 1e-13;
  if (!(difference(y.data, r.data, n) < tolerance && difference(y.data, q.data, n) < tolerance)) {
    fprintf(stderr, "the transforms of length %d differ\n", n);
    exit(1);
  }
  const std::vector<double> ns =
      xfm::bench::race({repeated(calls[0]), repeated(calls[1]), repeated(calls[2])}, {.rounds = rounds, .microseconds = 2000}).ns;
  printf("%s\t%d\t%.1f\t%.1f\t%.1f\t%.3f\t%.3f\n", Api<T>::kName, n, ns[0], ns[1], ns[2], ns[0] / ns[1], ns[0] / ns[2]);
  fflush(stdout);
  means.half.add(ns[0] / ns[1]);
  means.dct.add(ns[0] / ns[2]);
  means.slowest = std::max(means.slowest, ns[0] / ns[2]);
  Fftw<T>::destroy(dct);
  Api<T>::release(state);
}

template <class T>
void measure_all(int first, int last, int rounds) {
  Fftw<T>::limit(10);
  Means means;
  for (int e = first; e <= last; ++e) measure<T>(1 << e, rounds, means);
  printf("# %s: geometric mean %.3f of the half-length rival, %.3f of REDFT11 (worst %.3f)\n", Api<T>::kName,
         means.half.value(), means.dct.value(), means.slowest);
}

}  // namespace

int main(int argc, char** argv) {
  const int last = argc > 1 ? atoi(argv[1]) : 22, rounds = argc > 2 ? atoi(argv[2]) : 15, first = argc > 3 ? atoi(argv[3]) : 1;
  if (first < 1 || last > 25 || first > last || rounds < 1) {
    fprintf(stderr, "usage: bench_dct4 [last exponent, up to 25] [rounds] [first exponent]\n");
    return 1;
  }
  printf("type\tlength\tns\tns_half_length\tns_redft11\tto_half_length\tto_redft11\n");
  measure_all<float>(first, last, rounds);
  measure_all<double>(first, last, rounds);
}
