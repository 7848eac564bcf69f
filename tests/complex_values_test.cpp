// Values of the complex kernels against their definition, and what the flags do to them.
//
// Bounds, as parts of the largest output magnitude: in double precision each bin is within 2e-15, close enough for a
// constant wrong in its twelfth digit to show; in single precision the largest deviation of a run is at most 5e-7, and
// 2e-7 in the mean over a kernel's random runs.
#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>

#include "tests/complex_support.h"

namespace complex_test {
namespace {

constexpr double kDoubleBound = 2e-15, kSingleCap = 5e-7, kSingleMean = 2e-7;
constexpr int kRuns = 100;

template <class T>
constexpr double kBound = sizeof(T) == 8 ? kDoubleBound : kSingleCap;

unsigned seed_of(int n, int run) { return 1000u * n + run; }

// The bin that is furthest from the definition, if it is out of bounds.
template <class T>
testing::AssertionResult follows(const Definition& definition, const std::vector<T>& src, const std::vector<T>& got, double bound,
                                 std::vector<double>* seen = nullptr) {
  const std::vector<long double> expected = definition(src);
  const Deviation worst = deviation(got, expected);
  if (seen != nullptr) seen->push_back(worst.largest);
  if (worst.largest <= bound) return testing::AssertionSuccess();
  return testing::AssertionFailure() << at_bin(worst.bin, got, expected) << "; " << worst.largest
                                     << " of the largest magnitude, bound " << bound;
}

class ComplexValues : public ByDispatcher {};
INSTANTIATE_TEST_SUITE_P(All, ComplexValues, testing::ValuesIn(kDispatchers), dispatcher_name);

struct Extreme {
  double value = 0;
  std::string kernel;
  void raise(double v, const std::string& name) {
    if (v > value) value = v, kernel = name;
  }
};

TEST_P(ComplexValues, FollowTheDefinition) {
  Extreme mean, largest;
  for_each_kernel([&](const auto& k, auto one) {
    using T = decltype(one);
    const Definition definition(k.n, k.sign);
    std::vector<double> seen;
    for (int r = 0; r < kRuns; ++r) {
      const Call<T> call{k, xfmScaleNone, "random, seed " + std::to_string(seed_of(k.n, r))};
      const std::vector<T> src = random_values<T>(k.components(), seed_of(k.n, r));
      EXPECT_TRUE(follows(definition, src, run(call, src), kBound<T>, &seen)) << call;
    }
    const double of_kernel = std::accumulate(seen.begin(), seen.end(), 0.0) / kRuns;
    EXPECT_LE(of_kernel, sizeof(T) == 4 ? kSingleMean : kDoubleBound)
        << k.name << ", flag 8: mean over the seeds " << seed_of(k.n, 0) << " to " << seed_of(k.n, kRuns - 1);
    mean.raise(of_kernel, k.name);
    largest.raise(*std::max_element(seen.begin(), seen.end()), k.name);
  });
  std::printf("of the largest output magnitude: worst mean %.2e (%s), worst run %.2e (%s)\n", mean.value, mean.kernel.c_str(),
              largest.value, largest.kernel.c_str());
}

TEST_P(ComplexValues, ConstantAndImpulses) {
  for_each_kernel([](const auto& k, auto one) {
    using T = decltype(one);
    const Definition definition(k.n, k.sign);
    const Call<T> constant{k, xfmScaleNone, "constant (0.7, -0.3)"};
    std::vector<T> src(k.components());
    for (int i = 0; i < k.n; ++i) src[2 * i] = T(0.7), src[2 * i + 1] = T(-0.3);
    EXPECT_TRUE(follows(definition, src, run(constant, src), kBound<T>)) << constant;

    for (int at = 0; at < k.n; ++at) {
      const Call<T> impulse{k, xfmScaleNone, "impulse (0.3, 0.9) at " + std::to_string(at)};
      src.assign(k.components(), 0);
      src[2 * at] = T(0.3), src[2 * at + 1] = T(0.9);
      const std::vector<T> got = run(impulse, src);
      EXPECT_TRUE(follows(definition, src, got, kBound<T>)) << impulse;
      // No product takes part in the way of x[0], but for the chirp convolutions.
      const bool chirp = sizeof(T) == 4 && (k.n == 47 || k.n == 59);
      for (int i = 0; at == 0 && !chirp && i < k.components(); ++i)
        EXPECT_EQ(got[i], src[i % 2]) << impulse << ", component " << i;
    }
  });
}

// Every input is a part of every output: nothing is tested for, and nothing is left out.
TEST_P(ComplexValues, NotANumberReachesEveryBin) {
  for_each_kernel([](const auto& k, auto one) {
    using T = decltype(one);
    for (int at = 0; at < k.n; ++at) {
      const Call<T> call{k, xfmScaleNone, "not a number at " + std::to_string(at)};
      std::vector<T> src = random_values<T>(k.components(), k.n);
      src[2 * at] = src[2 * at + 1] = std::numeric_limits<T>::quiet_NaN();
      const std::vector<T> got = run(call, src);
      for (int i = 0; i < k.components(); ++i) ASSERT_TRUE(std::isnan(got[i])) << call << ", component " << i;
    }
  });
}

TEST_P(ComplexValues, FlagsMultiplyTheLastValueByTheirLiteral) {
  for_each_kernel([](const auto& k, auto one) {
    using T = decltype(one);
    const unsigned seed = seed_of(k.n, 0);
    const std::vector<T> src = random_values<T>(k.components(), seed);
    const std::vector<T> plain = run(Call<T>{k}, src);
    for (int flag : kFlags) {
      const Call<T> call{k, flag, "random, seed " + std::to_string(seed)};
      std::vector<T> expected = plain;
      for (T& v : expected) v *= k.scale(flag);
      EXPECT_TRUE(equal_bits(run(call, src), expected)) << call;
    }
  });
}

template <class T>
void there_and_back(const char* forward, const char* inverse) {
  struct Pair {
    int there, back;
    std::function<double(double)> factor;
  };
  const auto same = [](double) { return 1.0; };
  const auto times_n = [](double n) { return n; };
  const Pair pairs[] = {{xfmScaleNone, xfmScaleNone, times_n},     {xfmScaleFwdByN, xfmScaleFwdByN, same},
                        {xfmScaleInvByN, xfmScaleInvByN, same},    {xfmScaleBySqrtN, xfmScaleBySqrtN, same},
                        {xfmScaleInvByN, xfmScaleFwdByN, times_n}, {xfmScaleFwdByN, xfmScaleInvByN, [](double n) { return 1 / n; }}};
  for (const xfm::Function* f : functions().kernels(forward)) {
    const Kernel<T> there = kernel<T>(*f);
    const Kernel<T> back = kernel<T>(*functions().find(std::string(inverse) + "_" + std::to_string(f->size) + "_" + f->type));
    const std::vector<T> src = random_values<T>(there.components(), there.n);
    for (const Pair& p : pairs) {
      std::vector<long double> expected;
      for (T v : src) expected.push_back(p.factor(there.n) * static_cast<long double>(v));
      const std::vector<T> got = run(Call<T>{back, p.back}, run(Call<T>{there, p.there}, src));
      const Deviation worst = deviation(got, expected);
      EXPECT_LE(worst.largest, 4 * kBound<T>) << there.name << " flag " << p.there << ", back with flag " << p.back << ", seed "
                                             << there.n << ", " << at_bin(worst.bin, got, expected);
    }
  }
}

TEST(ComplexRoundTrips, ByPairsOfFlags) {
  there_and_back<float>("xfmgDFTFwd_CToC_32fc", "xfmgDFTInv_CToC");
  there_and_back<double>("xfmgDFTFwd_CToC_64fc", "xfmgDFTInv_CToC");
}

// The bound of double precision would not let one wrong constant pass, whichever the length.
TEST(ComplexReference, OneTwiddleOffByATrillionthIsSeen) {
  for (const char* dispatcher : {"xfmgDFTFwd_CToC_64fc", "xfmgDFTInv_CToC_64fc"})
    for (const xfm::Function* f : functions().kernels(dispatcher)) {
      const Kernel<double> k = kernel<double>(*f);
      const std::vector<double> src = random_values<double>(k.components(), seed_of(k.n, 0));
      const std::vector<double> got = run(Call<double>{k}, src);
      EXPECT_TRUE(follows(Definition(k.n, k.sign), src, got, kDoubleBound)) << k.name;
      EXPECT_FALSE(follows(Definition(k.n, k.sign, 1e-12L), src, got, kDoubleBound)) << k.name;
    }
}

}  // namespace
}  // namespace complex_test
