// What the real kernels compute, against the formulas in long double and against each other.
#include <cmath>

#include "tests/real_support.h"

namespace real_test {
namespace {

class RealValues : public ByFamily {};
INSTANTIATE_TEST_SUITE_P(All, RealValues, testing::ValuesIn(kFamilies), family_name);

template <class T>
long double largest(const std::vector<T>& values) {
  long double m = 0;
  for (T v : values) m = std::max(m, fabsl(static_cast<long double>(v)));
  return m;
}

// The largest error of a run relative to the largest output.
template <class T>
long double error_of(const Kernel<T>& k, const std::vector<T>& src, int flag) {
  const std::vector<T> got = run(k, src, flag);
  const std::vector<long double> want = expected(k, src, flag);
  long double error = 0;
  for (size_t j = 0; j < got.size(); ++j) error = std::max(error, fabsl(got[j] - want[j]));
  return error / largest(want);
}

TEST_P(RealValues, FollowTheDefinition) {
  for_both_precisions(GetParam(), [](const auto& k, auto one) {
    using T = decltype(one);
    const bool single = sizeof(T) == 4;
    long double sum = 0;
    int runs = 0;
    for (int flag : kFlags)
      for (unsigned seed = 0; seed < 8; ++seed) {
        const long double error = error_of(k, random_values<T>(k.source_length(), 1000 * k.n + seed), flag);
        ASSERT_LE(error, single ? 4e-7L : 9e-16L) << k.name << " flag " << flag << " seed " << seed;
        sum += error;
        ++runs;
      }
    ASSERT_LE(sum / runs, single ? 1.6e-7L : 4e-16L) << k.name << ": mean error";
    for (int i = 0; i < k.source_length(); ++i) {
      if (is_zero_cell(k.family->source, k.n, i)) continue;
      std::vector<T> impulse(k.source_length());
      impulse[i] = 1;
      ASSERT_LE(error_of(k, impulse, xfmScaleNone), single ? 4e-7L : 9e-16L) << k.name << " impulse at " << i;
    }
  });
}

// Where no arithmetic can round, the result is exact.
TEST_P(RealValues, ExactCases) {
  for_both_precisions(GetParam(), [](const auto& k, auto one) {
    using T = decltype(one);
    std::vector<T> impulse(k.source_length());
    impulse[0] = 1;
    const std::vector<T> got = run(k, impulse, xfmScaleNone);
    for (int j = 0; j < k.target_length(); ++j) {
      const bool zero = k.family->kind == Kind::Forward && cell_at(k.family->target, k.n, j).imaginary;
      ASSERT_EQ(got[j], T(zero ? 0 : 1)) << k.name << " position " << j;
    }
    if (k.family->kind == Kind::Inverse) {
      const std::vector<T> scaled = run(k, impulse, xfmScaleInvByN);
      for (T v : scaled) ASSERT_EQ(v, static_cast<T>(1.0L / k.n)) << k.name;
    }
    if (k.family->kind == Kind::Forward && k.n % 2 == 0) {
      std::vector<T> alternating(k.n);
      for (int i = 0; i < k.n; ++i) alternating[i] = i % 2 ? -1 : 1;
      const std::vector<T> spectrum = run(k, alternating, xfmScaleNone);
      for (int j = 0; j < k.target_length(); ++j) {
        const bool nyquist = 2 * cell_at(k.family->target, k.n, j).bin == k.n && !is_zero_cell(k.family->target, k.n, j);
        const double rounding = nyquist ? 0 : sizeof(T) == 4 ? 4e-6 : 8e-15;
        ASSERT_NEAR(spectrum[j], nyquist ? k.n : 0, rounding) << k.name << " position " << j;
      }
    }
  });
}

// The flag chooses a constant and nothing else: each output is the literal times the unscaled output, except where the
// literal multiplies an open double expression of a single-precision forward kernel.
TEST_P(RealValues, FlagsChooseAConstant) {
  int open_cells = 0;
  for_both_precisions(GetParam(), [&](const auto& k, auto one) {
    using T = decltype(one);
    std::vector<char> differs(k.target_length());
    for (unsigned seed = 0; seed < 16; ++seed) {
      const std::vector<T> src = random_values<T>(k.source_length(), 77 * k.n + seed);
      const std::vector<T> unscaled = run(k, src, xfmScaleNone);
      for (int flag : kFlags) {
        const T literal = static_cast<T>(scale_of(k.family->kind, flag, k.n));
        const std::vector<T> got = run(k, src, flag);
        for (int j = 0; j < k.target_length(); ++j) {
          const T wanted = literal * unscaled[j];
          if (bits(got[j]) == bits(wanted)) continue;
          ASSERT_TRUE(sizeof(T) == 4 && k.family->kind == Kind::Forward) << k.name << " flag " << flag << " position " << j;
          ASSERT_LE(std::abs(double(got[j]) - double(wanted)), 2e-7 * std::abs(double(wanted))) << k.name;
          differs[j] = 1;
        }
      }
    }
    for (char d : differs) open_cells += d;
    const bool pairs = k.n == 3 || k.n == 5 || k.n == 7 || k.n == 11;
    if (pairs && sizeof(T) == 4 && k.family->kind == Kind::Forward) {
      ASSERT_EQ(std::count(differs.begin(), differs.end(), 1), k.n - 1) << k.name;
    }
  });
  EXPECT_EQ(open_cells, GetParam().kind == Kind::Forward ? 142 : 0);
}

// The layouts are maps: the same bins to the bit, both ways.
TEST(RealLayouts, AgreeBitForBit) {
  const auto check = [](auto one) {
    using T = decltype(one);
    for (const int n : lengths())
      for (int flag : kFlags) {
        const std::vector<T> src = random_values<T>(n, n);
        std::map<std::pair<int, bool>, T> bins;
        for (const Family& family : {kFamilies[0], kFamilies[1], kFamilies[2]}) {
          const auto k = kernel<T>(family, n);
          const std::vector<T> got = run(k, src, flag);
          for (int j = 0; j < k.target_length(); ++j) {
            const Cell cell = cell_at(family.target, n, j);
            const auto [known, fresh] = bins.try_emplace({cell.bin, cell.imaginary}, got[j]);
            ASSERT_EQ(bits(known->second), bits(got[j])) << k.name << " position " << j;
          }
        }
        std::vector<T> samples;
        for (const Family& family : {kFamilies[3], kFamilies[4], kFamilies[5]}) {
          const auto k = kernel<T>(family, n);
          std::vector<T> half;
          for (int j = 0; j < k.source_length(); ++j) {
            const Cell cell = cell_at(family.source, n, j);
            half.push_back(bins.at({cell.bin, cell.imaginary}));
          }
          const std::vector<T> got = run(k, half, flag);
          if (samples.empty()) samples = got;
          ASSERT_TRUE(same_bits(samples, got)) << k.name;
        }
      }
  };
  check(float{});
  check(double{});
}

template <class T>
void expect_multiple(const std::string& what, const std::vector<T>& got, const std::vector<T>& x, long double factor) {
  const long double bound = (sizeof(T) == 4 ? 6e-7L : 2e-15L) * fabsl(factor) * largest(x);
  for (size_t i = 0; i < x.size(); ++i) ASSERT_LE(fabsl(got[i] - factor * x[i]), bound) << what << " sample " << i;
}

// There and back, by every pair of flags.
TEST(RealRoundTrips, GiveTheInputTimesTheScales) {
  const auto check = [](auto one) {
    using T = decltype(one);
    for (const int n : lengths()) {
      const std::vector<T> x = random_values<T>(n, 5 * n);
      for (int there : kFlags)
        for (int back : kFlags) {
          for (int layout = 0; layout < 3; ++layout) {
            const auto forward = kernel<T>(kFamilies[layout], n), inverse = kernel<T>(kFamilies[layout + 3], n);
            const long double factor = n * scale_of(Kind::Forward, there, n) * scale_of(Kind::Inverse, back, n);
            expect_multiple(inverse.name, run(inverse, run(forward, x, there), back), x, factor);
          }
          const auto hartley = kernel<T>(kFamilies[6], n);
          const long double factor = n * scale_of(Kind::Hartley, there, n) * scale_of(Kind::Hartley, back, n);
          expect_multiple(hartley.name, run(hartley, run(hartley, x, there), back), x, factor);
        }
    }
  };
  check(float{});
  check(double{});
}

TEST(RealFlags, SynonymsGiveTheSameBits) {
  const auto check = [](auto one) {
    using T = decltype(one);
    for (const int n : lengths()) {
      const std::vector<T> x = random_values<T>(n + 2, n);
      const auto hartley = kernel<T>(kFamilies[6], n), inverse = kernel<T>(kFamilies[4], n), forward = kernel<T>(kFamilies[1], n);
      ASSERT_TRUE(same_bits(run(hartley, x, xfmScaleFwdByN), run(hartley, x, xfmScaleInvByN))) << n;
      ASSERT_TRUE(same_bits(run(inverse, x, xfmScaleFwdByN), run(inverse, x, xfmScaleNone))) << n;
      ASSERT_TRUE(same_bits(run(forward, x, xfmScaleInvByN), run(forward, x, xfmScaleNone))) << n;
    }
  };
  check(float{});
  check(double{});
}

// Half spectrum against the Hartley transform: H[k] = R_k - I_k, H[N-k] = R_k + I_k.
TEST(RealIdentities, HartleyIsRealLessImaginary) {
  const auto check = [](auto one) {
    using T = decltype(one);
    for (const int n : lengths()) {
      const std::vector<T> x = random_values<T>(n, 3 * n);
      const std::vector<T> c = run(kernel<T>(kFamilies[0], n), x, xfmScaleBySqrtN);
      const std::vector<T> h = run(kernel<T>(kFamilies[6], n), x, xfmScaleBySqrtN);
      const long double bound = (sizeof(T) == 4 ? 6e-7L : 2e-15L) * largest(h);
      for (int k = 0; 2 * k <= n; ++k) {
        ASSERT_LE(fabsl(static_cast<long double>(h[k]) - c[2 * k] + c[2 * k + 1]), bound) << n << " bin " << k;
        if (k == 0) continue;
        ASSERT_LE(fabsl(static_cast<long double>(h[n - k]) - c[2 * k] - c[2 * k + 1]), bound) << n << " bin " << k;
      }
    }
  };
  check(float{});
  check(double{});
}

// The complex transform of the same samples, in builds that have it.
TEST(RealIdentities, HalfSpectrumIsHalfOfTheComplexOne) {
  const auto check = [](auto one, const char* type) {
    using T = decltype(one);
    for (const int n : lengths()) {
      const std::string name = "xfmgDFTFwd_CToC_" + std::to_string(n) + type;
      const auto complex = reinterpret_cast<XfmStatus (*)(const T*, T*, int)>(dlsym(RTLD_DEFAULT, name.c_str()));
      ASSERT_NE(complex, nullptr) << name;
      const std::vector<T> x = random_values<T>(n, 9 * n);
      const std::vector<T> c = run(kernel<T>(kFamilies[0], n), x, xfmScaleNone);
      std::vector<T> interleaved(2 * n), full(2 * n);
      for (int i = 0; i < n; ++i) interleaved[2 * i] = x[i];
      ASSERT_EQ(complex(interleaved.data(), full.data(), xfmScaleNone), xfmStatusOk);
      const long double bound = (sizeof(T) == 4 ? 8e-7L : 2e-15L) * largest(full);
      for (size_t j = 0; j < c.size(); ++j) ASSERT_LE(fabsl(static_cast<long double>(c[j]) - full[j]), bound) << name << " cell " << j;
    }
  };
  if (dlsym(RTLD_DEFAULT, "xfmgDFTFwd_CToC_32fc") == nullptr) GTEST_SKIP() << "this build has no complex transform";
  check(float{}, "_32fc");
  check(double{}, "_64fc");
}

}  // namespace
}  // namespace real_test
