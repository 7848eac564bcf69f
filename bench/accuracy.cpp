// Errors of all transforms against their sum formula, FFTW's beside them:
//
//   bench_accuracy OUTPUT.tsv
//
// Every family, precision and length, over 40 seeded inputs, uniform in [-1, 1]; for the DCT-IV fewer from 2^15 points on. Columns:
//
//   error      root mean square over the inputs of |y - Y| / |Y|, in the Euclidean norm, in units of the precision's epsilon
//   worst      the largest deviation of an output over all inputs, relative to the largest output, in units of epsilon
//   fftw       `error` of the same transform by FFTW (FFTW_ESTIMATE), where it has one
//
// Y is the sum in long double; of the DCT-IV from 128 points on FFTW's own in long double, which is 2000 times finer than double.
#include <dlfcn.h>
#include <fftw3.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "generator/functions.h"
#include "generator/program.h"
#include "generator/text.h"
#include "xfm.h"

namespace {

using xfm::Function;
using xfm::InputError;
using Wide = std::vector<long double>;

// exp(2*pi*i*k/n) for k = 0 .. n-1, found by any k.
class Roots {
 public:
  explicit Roots(int n) : n_(n) {
    for (int k = 0; k < n; ++k) {
      const long double angle = 2 * std::numbers::pi_v<long double> * k / n;
      cos_.push_back(std::cos(angle));
      sin_.push_back(2 * k % n == 0 ? 0 : std::sin(angle));
    }
  }
  long double cos(long long k) const { return cos_[k % n_]; }
  long double sin(long long k) const { return sin_[k % n_]; }

 private:
  int n_;
  Wide cos_, sin_;
};

// FFTW's functions of one precision.
template <class T>
struct Fftw;
template <>
struct Fftw<float> {
  using Complex = fftwf_complex;
  using Plan = fftwf_plan;
  static constexpr auto dft = fftwf_plan_dft_1d;
  static constexpr auto forward = fftwf_plan_dft_r2c_1d;
  static constexpr auto inverse = fftwf_plan_dft_c2r_1d;
  static constexpr auto real = fftwf_plan_r2r_1d;
  static constexpr auto execute = fftwf_execute;
  static constexpr auto destroy = fftwf_destroy_plan;
};
template <>
struct Fftw<double> {
  using Complex = fftw_complex;
  using Plan = fftw_plan;
  static constexpr auto dft = fftw_plan_dft_1d;
  static constexpr auto forward = fftw_plan_dft_r2c_1d;
  static constexpr auto inverse = fftw_plan_dft_c2r_1d;
  static constexpr auto real = fftw_plan_r2r_1d;
  static constexpr auto execute = fftw_execute;
  static constexpr auto destroy = fftw_destroy_plan;
};

// What is measured of one family: arrays of components, the exact transform, FFTW's plan.
template <class T>
struct Family {
  int inputs, outputs;
  std::function<Wide(const std::vector<T>&)> exact;
  std::function<typename Fftw<T>::Plan(T*, T*)> plan;  // empty: FFTW has none
};

template <class T>
Family<T> complex_family(int n, int sign) {
  const auto exact = [=, roots = Roots(n)](const std::vector<T>& x) {
    Wide y(2 * n);
    for (int k = 0; k < n; ++k)
      for (int j = 0; j < n; ++j) {
        const long double c = roots.cos(j * k), s = sign * roots.sin(j * k);
        y[2 * k] += x[2 * j] * c - x[2 * j + 1] * s;
        y[2 * k + 1] += x[2 * j] * s + x[2 * j + 1] * c;
      }
    return y;
  };
  using C = typename Fftw<T>::Complex;
  return {2 * n, 2 * n, exact, [=](T* x, T* y) {
            return Fftw<T>::dft(n, reinterpret_cast<C*>(x), reinterpret_cast<C*>(y), sign, FFTW_ESTIMATE);
          }};
}

// In the CCS layout; the others hold the same values.
template <class T>
Family<T> forward_family(int n) {
  const int bins = n / 2 + 1;
  const auto exact = [=, roots = Roots(n)](const std::vector<T>& x) {
    Wide y(2 * bins);
    for (int k = 0; k < bins; ++k)
      for (int j = 0; j < n; ++j) {
        y[2 * k] += x[j] * roots.cos(j * k);
        y[2 * k + 1] -= x[j] * roots.sin(j * k);
      }
    return y;
  };
  return {n, 2 * bins, exact, [=](T* x, T* y) {
            return Fftw<T>::forward(n, x, reinterpret_cast<typename Fftw<T>::Complex*>(y), FFTW_ESTIMATE);
          }};
}

template <class T>
Family<T> inverse_family(int n) {
  const auto exact = [=, roots = Roots(n)](const std::vector<T>& x) {
    Wide y(n);
    for (int j = 0; j < n; ++j)
      for (int k = 0; k < n; ++k) {
        const int bin = std::min(k, n - k);
        const long double im = 2 * bin % n == 0 ? 0 : k == bin ? x[2 * bin + 1] : -x[2 * bin + 1];
        y[j] += x[2 * bin] * roots.cos(j * k) - im * roots.sin(j * k);
      }
    return y;
  };
  return {2 * (n / 2 + 1), n, exact, [=](T* x, T* y) {
            return Fftw<T>::inverse(n, reinterpret_cast<typename Fftw<T>::Complex*>(x), y, FFTW_ESTIMATE | FFTW_PRESERVE_INPUT);
          }};
}

template <class T>
Family<T> hartley_family(int n) {
  const auto exact = [=, roots = Roots(n)](const std::vector<T>& x) {
    Wide y(n);
    for (int k = 0; k < n; ++k)
      for (int j = 0; j < n; ++j) y[k] += x[j] * (roots.cos(j * k) + roots.sin(j * k));
    return y;
  };
  return {n, n, exact, [=](T* x, T* y) { return Fftw<T>::real(n, x, y, FFTW_DHT, FFTW_ESTIMATE); }};
}

template <class T>
Family<T> walsh_hadamard_family(int order) {
  const int n = 1 << order;
  const auto exact = [=](const std::vector<T>& x) {
    Wide y(x.begin(), x.end());
    for (int half = 1; half < n; half *= 2)
      for (int i = 0; i < n; ++i)
        if (!(i & half)) {
          const long double a = y[i], b = y[i + half];
          y[i] = a + b;
          y[i + half] = a - b;
        }
    return y;
  };
  return {n, n, exact, {}};
}

template <class T>
Family<T> dct4_family(int n) {
  const auto exact = [=, roots = Roots(n <= 64 ? 8 * n : 1)](const std::vector<T>& x) {
    Wide in(x.begin(), x.end()), y(n);
    if (n <= 64) {
      for (int k = 0; k < n; ++k)
        for (int j = 0; j < n; ++j) y[k] += in[j] * roots.cos((2LL * j + 1) * (2 * k + 1));
      return y;
    }
    const fftwl_plan plan = fftwl_plan_r2r_1d(n, in.data(), y.data(), FFTW_REDFT11, FFTW_ESTIMATE);
    fftwl_execute(plan);
    fftwl_destroy_plan(plan);
    for (long double& v : y) v /= 2;
    return y;
  };
  return {n, n, exact, [=](T* x, T* y) { return Fftw<T>::real(n, x, y, FFTW_REDFT11, FFTW_ESTIMATE); }};
}

struct Errors {
  double squares = 0, worst = 0;
  int inputs = 0;

  template <class T>
  void add(const std::vector<T>& got, const Wide& exact, long double factor) {
    long double difference = 0, whole = 0, largest = 0, deviation = 0;
    for (size_t i = 0; i < exact.size(); ++i) {
      const long double d = got[i] * factor - exact[i];
      difference += d * d;
      whole += exact[i] * exact[i];
      largest = std::max(largest, std::fabs(exact[i]));
      deviation = std::max(deviation, std::fabs(d));
    }
    squares += static_cast<double>(difference / whole);
    worst = std::max(worst, static_cast<double>(deviation / largest));
    ++inputs;
  }
  template <class T>
  double mean_in_epsilons() const { return std::sqrt(squares / inputs) / std::numeric_limits<T>::epsilon(); }
};

// Measures `run(src, dst)` and gives the row's figures.
template <class T>
std::string measured(const Family<T>& family, int inputs, bool halve, const std::function<XfmStatus(const T*, T*)>& run) {
  std::vector<T> x(family.inputs), y(family.outputs);
  const auto plan = family.plan ? family.plan(x.data(), y.data()) : nullptr;
  Errors ours, rival;
  std::mt19937_64 engine(1);
  for (int i = 0; i < inputs; ++i) {
    for (T& v : x) v = static_cast<T>(static_cast<long double>(engine()) / 0x1p63L - 1);
    const Wide exact = family.exact(x);
    if (run(x.data(), y.data()) != xfmStatusOk) throw InputError("a transform failed");
    ours.add(y, exact, 1);
    if (!plan) continue;
    Fftw<T>::execute(plan);
    rival.add(y, exact, halve ? 0.5L : 1);
  }
  if (plan) Fftw<T>::destroy(plan);
  char text[96];
  std::snprintf(text, sizeof text, "%.4f\t%.3f\t", ours.mean_in_epsilons<T>(), ours.worst / std::numeric_limits<T>::epsilon());
  std::string figures = text;
  std::snprintf(text, sizeof text, "%.4f", plan ? rival.mean_in_epsilons<T>() : 0);
  return figures + (plan ? text : "-");
}

template <class F>
F* address(const std::string& name) {
  void* const p = dlsym(RTLD_DEFAULT, name.c_str());
  if (p == nullptr) throw InputError("not in the library: " + name);
  return reinterpret_cast<F*>(p);
}

template <class T>
Family<T> family_of(const Function& f) {
  if (f.family == "xfmgDFTFwd_CToC") return complex_family<T>(f.size, -1);
  if (f.family == "xfmgDFTInv_CToC") return complex_family<T>(f.size, +1);
  if (f.family == "xfmgDFTFwd_RToCCS") return forward_family<T>(f.size);
  if (f.family == "xfmgDFTInv_CCSToR") return inverse_family<T>(f.size);
  if (f.family == "xfmgHartley") return hartley_family<T>(f.size);
  return walsh_hadamard_family<T>(f.size);
}

template <class T>
std::string kernel_row(const Function& f) {
  const auto run = [&](const T* x, T* y) {
    if (f.takes_buffer()) return address<XfmStatus(const T*, T*, int, void*)>(f.name)(x, y, xfmScaleNone, nullptr);
    return address<XfmStatus(const T*, T*, int)>(f.name)(x, y, xfmScaleNone);
  };
  const int points = f.part == "wht" ? 1 << f.size : f.size;
  const std::string figures = measured<T>(family_of<T>(f), 40, false, run);
  return f.family.substr(4) + "\t" + f.type + "\t" + std::to_string(points) + "\t" + figures + "\n";
}

template <class T, class State>
std::string dct4_rows(const Function& f) {
  std::string rows;
  for (int k = 1; k <= 20; ++k) {
    State* state = nullptr;
    if (address<XfmStatus(State**, int)>("xfmgDCT4InitAlloc_" + f.type)(&state, 1 << k) != xfmStatusOk) throw InputError("no state");
    const auto run = [&](const T* x, T* y) { return address<XfmStatus(const T*, T*, State*)>(f.name)(x, y, state); };
    const std::string figures = measured<T>(dct4_family<T>(1 << k), k < 15 ? 40 : 4, true, run);
    rows += "DCT4\t" + f.type + "\t" + std::to_string(1 << k) + "\t" + figures + "\n";
    address<XfmStatus(State*)>("xfmgDCT4Free_" + f.type)(state);
  }
  return rows;
}

// The Pack and Perm kernels give the values of CCS.
bool measured_with_ccs(const Function& f) { return f.family.find("Pack") != std::string::npos || f.family.find("Perm") != std::string::npos; }

void program(int argc, char** argv) {
  if (argc != 2) throw InputError("usage: bench_accuracy OUTPUT.tsv");
  std::string text = "family\ttype\tpoints\terror\tworst\tfftw\n";
  const xfm::FunctionList list = xfm::FunctionList::read(XFM_FUNCTIONS);
  for (const Function& f : list.functions()) {
    if (f.family == "xfmgDCT4")
      text += f.type == "32f" ? dct4_rows<float, XfmDCT4State_32f>(f) : dct4_rows<double, XfmDCT4State_64f>(f);
    if (f.kind != xfm::FunctionKind::Kernel || measured_with_ccs(f)) continue;
    text += f.type.starts_with("32") ? kernel_row<float>(f) : kernel_row<double>(f);
  }
  xfm::write_file(argv[1], text);
}

}  // namespace

int main(int argc, char** argv) { return xfm::run_program(argc, argv, program); }
