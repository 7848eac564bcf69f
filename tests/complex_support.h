// What the tests of the complex kernels share: the list of kernels, the transform by its formula, and messages that name
// the call that failed. Data are components, real and imaginary parts in turn.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <quadmath.h>

#include <cmath>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "generator/functions.h"
#include "tests/arrays.h"
#include "tests/scale.h"
#include "xfm.h"

namespace complex_test {

using namespace test_arrays;  // NOLINT: the tests are one program each

using test_arrays::kFlags;

inline const xfm::FunctionList& functions() {
  static const xfm::FunctionList list = xfm::FunctionList::read(XFM_FUNCTIONS);
  return list;
}

template <class T>
struct Kernel {
  using Function = XfmStatus(const T* src, T* dst, int flag);

  std::string name;
  int n;
  int sign;  // of the exponent
  xfm::Gate gate;
  Function* run;

  int components() const { return 2 * n; }
  // The literal that a flag selects.
  T scale(int flag) const { return test_scale::scale_of<T>(sign < 0 ? xfm::ScaleRule::Forward : xfm::ScaleRule::Inverse, flag, n); }
};

template <class T>
Kernel<T> kernel(const xfm::Function& f) {
  void* const address = dlsym(RTLD_DEFAULT, f.name.c_str());
  if (address == nullptr) throw std::runtime_error("not in the library: " + f.name);
  return {f.name, f.size, f.scale == xfm::ScaleRule::Forward ? -1 : +1, f.gate,
          reinterpret_cast<typename Kernel<T>::Function*>(address)};
}

// A call in words: the kernel says family, length and precision.
template <class T>
struct Call {
  const Kernel<T>& kernel;
  int flag = xfmScaleNone;
  std::string data = {};  // what the source holds, with its seed
  std::string place = {};

  friend std::ostream& operator<<(std::ostream& out, const Call& c) {
    return out << c.kernel.name << ", flag " << c.flag << (c.data.empty() ? "" : ", ") << c.data
               << (c.place.empty() ? "" : ", ") << c.place;
  }
};

template <class T>
std::vector<T> run(const Call<T>& call, const std::vector<T>& src) {
  std::vector<T> dst(call.kernel.components(), T(-7));
  EXPECT_EQ(call.kernel.run(src.data(), dst.data(), call.flag), xfmStatusOk) << call;
  return dst;
}

// Equal up to nothing; the message has the first component that differs and by how many units in the last place.
template <class T>
testing::AssertionResult equal_bits(const std::vector<T>& got, const std::vector<T>& expected) {
  for (size_t i = 0; i < expected.size(); ++i) {
    if (bits(got[i]) == bits(expected[i])) continue;
    const auto apart = static_cast<int64_t>(bits(got[i])) - static_cast<int64_t>(bits(expected[i]));
    char text[160];
    std::snprintf(text, sizeof text, "bin %zu %s: expected %a (%.9g), got %a (%.9g), %lld ulp", i / 2,
                  i % 2 ? "imaginary" : "real", double(expected[i]), double(expected[i]), double(got[i]), double(got[i]),
                  static_cast<long long>(apart));
    return testing::AssertionFailure() << text;
  }
  return testing::AssertionSuccess();
}

// The transform by its formula. `bend` multiplies the root of unity of exponent 1 by 1 + bend, to show that a wrong
// constant is seen.
class Definition {
 public:
  Definition(int n, int sign, long double bend = 0) : n_(n), cos_(n), sin_(n) {
    for (int e = 0; e < n; ++e) {
      const __float128 angle = 2 * M_PIq * e / n;
      cos_[e] = static_cast<long double>(cosq(angle));
      sin_[e] = sign * static_cast<long double>(sinq(angle));
    }
    cos_[1] *= 1 + bend;
    sin_[1] *= 1 + bend;
  }

  template <class T>
  std::vector<long double> operator()(const std::vector<T>& x) const {
    std::vector<long double> y(2 * n_);
    for (int k = 0; k < n_; ++k)
      for (int i = 0, e = 0; i < n_; ++i, e = (e + k) % n_) {
        y[2 * k] += x[2 * i] * cos_[e] - x[2 * i + 1] * sin_[e];
        y[2 * k + 1] += x[2 * i] * sin_[e] + x[2 * i + 1] * cos_[e];
      }
    return y;
  }

 private:
  int n_;
  std::vector<long double> cos_, sin_;
};

struct Deviation {
  double largest = 0;  // magnitude of the difference in a bin, of the largest output magnitude
  int bin = 0;
};

template <class T>
Deviation deviation(const std::vector<T>& got, const std::vector<long double>& expected) {
  Deviation worst;
  long double magnitude = 0;
  for (size_t k = 0; k < expected.size() / 2; ++k) magnitude = std::max(magnitude, hypotl(expected[2 * k], expected[2 * k + 1]));
  for (size_t k = 0; k < expected.size() / 2; ++k) {
    const long double d = hypotl(got[2 * k] - expected[2 * k], got[2 * k + 1] - expected[2 * k + 1]) / magnitude;
    if (!(d <= worst.largest)) worst = {static_cast<double>(d), static_cast<int>(k)};
  }
  return worst;
}

// The distance between neighbouring values of the precision around x.
template <class T>
long double ulp_of(long double x) {
  const T a = std::abs(static_cast<T>(x));
  return static_cast<long double>(std::nextafter(a, T(INFINITY))) - a;
}

template <class T>
std::string at_bin(int bin, const std::vector<T>& got, const std::vector<long double>& expected) {
  char text[240];
  std::snprintf(text, sizeof text, "bin %d: expected (%.19Lg, %.19Lg), got (%.17g, %.17g), off by (%.2Lf, %.2Lf) ulp", bin,
                expected[2 * bin], expected[2 * bin + 1], double(got[2 * bin]), double(got[2 * bin + 1]),
                (got[2 * bin] - expected[2 * bin]) / ulp_of<T>(expected[2 * bin]),
                (got[2 * bin + 1] - expected[2 * bin + 1]) / ulp_of<T>(expected[2 * bin + 1]));
  return text;
}

// Test cases by direction and precision.
class ByDispatcher : public testing::TestWithParam<const char*> {
 protected:
  template <class Check>
  void for_each_kernel(Check check) const {
    const std::string dispatcher = GetParam();
    const std::vector<const xfm::Function*> kernels = functions().kernels(dispatcher);
    ASSERT_EQ(kernels.size(), 63u) << dispatcher;
    for (const xfm::Function* f : kernels) {
      if (f->type == "32fc") check(kernel<float>(*f), float{});
      else check(kernel<double>(*f), double{});
      if (HasFatalFailure()) return;
    }
  }
};

inline constexpr const char* kDispatchers[] = {"xfmgDFTFwd_CToC_32fc", "xfmgDFTFwd_CToC_64fc", "xfmgDFTInv_CToC_32fc",
                                               "xfmgDFTInv_CToC_64fc"};
inline std::string dispatcher_name(const testing::TestParamInfo<const char*>& info) {
  return std::string(info.param).substr(4);
}

}  // namespace complex_test
