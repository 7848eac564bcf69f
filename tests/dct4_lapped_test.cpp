// The example's lapped transform: what it computes, and that nothing is lost when every coefficient is kept.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "examples/lapped_transform.h"

namespace {

// A voice of a few partials that comes and goes, over a little noise.
std::vector<float> voice(size_t count) {
  std::mt19937 random(5);
  std::normal_distribution<double> noise(0, 1e-3);
  std::vector<float> samples(count);
  for (size_t i = 0; i < count; ++i) {
    const double t = static_cast<double>(i) / 48000;
    double sum = noise(random);
    for (int k = 1; k < 9; ++k) sum += std::sin(2 * std::numbers::pi * 173 * k * t) / (4 * k);
    samples[i] = static_cast<float>(sum * (0.6 + 0.4 * std::sin(9 * t)));
  }
  return samples;
}

}  // namespace

TEST(Dct4Lapped, IsTheLappedTransform) {
  constexpr int N = LappedTransform::kFrame;
  const std::vector<float> x = voice(3 * N);
  LappedTransform lapped;
  const std::vector<float> y = lapped.analyse(x);
  ASSERT_EQ(y.size(), 4u * N);
  for (int k : {0, 1, 5, 77, 512, 1023}) {  // frame 1 sees the samples 0 .. 2N-1
    double sum = 0;
    for (int i = 0; i < 2 * N; ++i)
      sum += std::sin(std::numbers::pi * (i + 0.5) / (2 * N)) * x[i] *
             std::cos(std::numbers::pi / N * (i + 0.5 + N / 2.0) * (k + 0.5));
    EXPECT_NEAR(y[N + k], sum, 2e-4) << k;
  }
}

TEST(Dct4Lapped, ReconstructsPerfectly) {
  for (size_t count : {1u, 1000u, 1024u, 5000u, 70001u}) {
    const LappedReport report = lapped_report(voice(count), 0.05);
    EXPECT_GT(report.all, 125) << count;  // rounding of single precision
    EXPECT_LT(report.kept, report.all) << count;
    EXPECT_EQ(report.left, static_cast<size_t>(0.05 * static_cast<double>(report.coefficients)));
  }
  EXPECT_GT(lapped_report(voice(70001), 0.05).kept, 20);
}
