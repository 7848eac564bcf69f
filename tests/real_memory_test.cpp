// What the real kernels touch: exactly their arrays, wherever they lie, in place or not, and nothing on bad arguments.
#include <limits>

#include "tests/real_support.h"

namespace real_test {
namespace {

class RealMemory : public ByFamily {};
INSTANTIATE_TEST_SUITE_P(All, RealMemory, testing::ValuesIn(kFamilies), family_name);

TEST_P(RealMemory, ArraysOfExactLengthAtAnyElement) {
  for_both_precisions(GetParam(), [](const auto& k, auto one) {
    using T = decltype(one);
    using Array = Guarded<T>;
    const std::vector<T> values = random_values<T>(k.source_length(), k.n);
    const std::vector<T> wanted = run(k, values, xfmScaleNone);
    for (const auto at : {Array::At::Begin, Array::At::End})
      for (int src_shift : {0, 1})
        for (int dst_shift : {0, 1, 3}) {
          Array src(k.source_length(), at, src_shift), dst(k.target_length(), at, dst_shift);
          src.fill(values);
          src.protect();
          ASSERT_EQ(k.run(src.data(), dst.data(), xfmScaleNone), xfmStatusOk) << k.name;
          ASSERT_TRUE(same_bits(dst.values(), wanted)) << k.name << " shifts " << src_shift << " " << dst_shift;
          ASSERT_TRUE(dst.clean_around()) << k.name;
        }
  });
}

TEST_P(RealMemory, InPlaceGivesTheSameBits) {
  for_both_precisions(GetParam(), [](const auto& k, auto one) {
    using T = decltype(one);
    const std::vector<T> values = random_values<T>(k.source_length(), k.n + 100);
    const int room = std::max(k.source_length(), k.target_length());
    for (int flag : kFlags)
      for (int shift : {0, 1}) {
        Guarded<T> shared(room, Guarded<T>::At::End, shift);
        shared.fill(values);
        ASSERT_EQ(k.run(shared.data(), shared.data(), flag), xfmStatusOk) << k.name;
        std::vector<T> got = shared.values();
        got.resize(k.target_length());
        ASSERT_TRUE(same_bits(got, run(k, values, flag))) << k.name << " flag " << flag;
      }
  });
}

TEST_P(RealMemory, ArgumentsAreTestedPointersFirstAndNothingIsWritten) {
  constexpr int kBadFlags[] = {0, 3, 5, 6, 7, 9, 10, 12, 16, 77, -1, -8, 8 + (1 << 30), std::numeric_limits<int>::min()};
  for_both_precisions(GetParam(), [&](const auto& k, auto one) {
    using T = decltype(one);
    const std::vector<T> values(k.source_length(), T(1));
    Guarded<T> dst(0, Guarded<T>::At::Begin);
    for (int flag : kBadFlags) {
      EXPECT_EQ(k.run(values.data(), dst.data(), flag), xfmStatusFlagError) << k.name << " flag " << flag;
      EXPECT_EQ(k.run(nullptr, dst.data(), flag), xfmStatusNullPointer) << k.name << " flag " << flag;
      EXPECT_EQ(k.run(values.data(), nullptr, flag), xfmStatusNullPointer) << k.name << " flag " << flag;
    }
    for (int flag : kFlags) {
      EXPECT_EQ(k.run(nullptr, dst.data(), flag), xfmStatusNullPointer) << k.name;
      EXPECT_EQ(k.run(values.data(), nullptr, flag), xfmStatusNullPointer) << k.name;
      EXPECT_EQ(k.run(nullptr, nullptr, flag), xfmStatusNullPointer) << k.name;
    }
    EXPECT_TRUE(dst.clean_around()) << k.name;
  });
}

// The imaginary parts of real bins may hold anything, and the last of them may even lie on an unreadable page.
TEST(RealMemoryCcs, InverseKernelsDoNotLookAtZeroCells) {
  const Family& family = kFamilies[3];
  for_both_precisions(family, [](const auto& k, auto one) {
    using T = decltype(one);
    std::vector<T> values = random_values<T>(k.source_length(), k.n);
    const std::vector<T> wanted = run(k, values, xfmScaleInvByN);
    for (int j = 0; j < k.source_length(); ++j)
      if (is_zero_cell(family.source, k.n, j)) values[j] = std::numeric_limits<T>::signaling_NaN();
    ASSERT_TRUE(same_bits(run(k, values, xfmScaleInvByN), wanted)) << k.name;
    const int looked_at = k.n + 1;  // behind it, for even n, stands the imaginary part of bin n/2
    Guarded<T> cut(looked_at, Guarded<T>::At::End);
    cut.fill({values.begin(), values.begin() + looked_at});
    std::vector<T> dst(k.n);
    ASSERT_EQ(k.run(cut.data(), dst.data(), xfmScaleInvByN), xfmStatusOk);
    ASSERT_TRUE(same_bits(dst, wanted)) << k.name;
  });
}

TEST_P(RealMemory, ZeroCellsAreZeroWhateverTheInput) {
  for_both_precisions(GetParam(), [](const auto& k, auto one) {
    using T = decltype(one);
    for (T value : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(), T(-0.0), T(-1)})
      for (int flag : kFlags) {
        const std::vector<T> got = run(k, std::vector<T>(k.source_length(), value), flag);
        for (int j = 0; j < k.target_length(); ++j)
          if (is_zero_cell(k.family->target, k.n, j)) {
            ASSERT_EQ(bits(got[j]), 0u) << k.name << " position " << j;
          }
      }
    for (int flag : kFlags)
      for (T cell : run(k, std::vector<T>(k.source_length(), T(0)), flag)) ASSERT_EQ(bits(cell), 0u) << k.name;
  });
}

// A NaN goes through the arithmetic: each input reaches every output that depends on it, here all but zero cells and,
// of an inverse transform, samples at zeros of the bin's sine.
TEST_P(RealMemory, NotANumberReachesTheOutputs) {
  for_both_precisions(GetParam(), [](const auto& k, auto one) {
    using T = decltype(one);
    for (int i = 0; i < k.source_length(); ++i) {
      if (is_zero_cell(k.family->source, k.n, i)) continue;
      std::vector<T> values(k.source_length(), T(1));
      values[i] = std::numeric_limits<T>::quiet_NaN();
      std::vector<T> unit(k.source_length());
      unit[i] = 1;
      const std::vector<long double> share = expected(k, unit, xfmScaleNone);
      const std::vector<T> got = run(k, values, xfmScaleNone);
      for (int j = 0; j < k.target_length(); ++j)
        if (fabsl(share[j]) > 1e-15L) {
          ASSERT_TRUE(std::isnan(got[j])) << k.name << " from " << i << " to " << j;
        }
    }
  });
}

}  // namespace
}  // namespace real_test
