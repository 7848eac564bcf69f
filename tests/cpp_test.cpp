// The C++ binding against the C functions, bit for bit, and its errors.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "tests/arrays.h"
#include "xfm.hpp"

namespace {

using test_arrays::random_values;

template <class T>
std::vector<std::complex<T>> random_complex(int n, unsigned seed) {
  const std::vector<T> parts = random_values<T>(2 * n, seed);
  std::vector<std::complex<T>> values(n);
  for (int i = 0; i < n; ++i) values[i] = {parts[2 * i], parts[2 * i + 1]};
  return values;
}

template <class T>
const Xfm32fc* c(const std::complex<T>* p) { return reinterpret_cast<const Xfm32fc*>(p); }
template <class T>
Xfm32fc* c(std::complex<T>* p) { return reinterpret_cast<Xfm32fc*>(p); }

TEST(Cpp, TheThreeWaysOfACallAreTheCFunction) {
  const auto x = random_complex<float>(60, 1);
  std::vector<std::complex<float>> expected(60), y(60);
  ASSERT_EQ(xfmgDFTFwd_CToC_32fc(c(x.data()), c(expected.data()), 60, xfmScaleBySqrtN), xfmStatusOk);
  xfm::dft<60>(x.data(), y.data(), xfm::Scale::BySqrtN);
  EXPECT_EQ(y, expected);
  y.assign(60, {});
  xfm::dft(x.data(), y.data(), 60, xfm::Scale::BySqrtN);
  EXPECT_EQ(y, expected);
  y.assign(60, {});
  xfm::dft(x, y, xfm::Scale::BySqrtN);
  EXPECT_EQ(y, expected);

  ASSERT_EQ(xfmgDFTInv_CToC_32fc(c(x.data()), c(expected.data()), 60, xfmScaleInvByN), xfmStatusOk);
  xfm::inverse_dft(x, y, xfm::Scale::InverseByN);
  EXPECT_EQ(y, expected);
  xfm::inverse_dft<60>(y.data(), y.data());
  xfm::inverse_dft(expected.data(), expected.data(), 60);
  EXPECT_EQ(y, expected);
}

TEST(Cpp, AnArrayKnownToTheCompilerTakesTheKernel) {
  const auto x = random_values<double>(16, 2);
  std::array<double, 16> samples;
  std::copy(x.begin(), x.end(), samples.begin());
  std::array<std::complex<double>, 9> bins;
  xfm::real_dft(samples, bins);
  std::vector<double> expected(18);
  ASSERT_EQ(xfmgDFTFwd_RToCCS_16_64f(x.data(), expected.data(), xfmScaleNone), xfmStatusOk);
  for (int k = 0; k <= 8; ++k) EXPECT_EQ(bins[k], std::complex<double>(expected[2 * k], expected[2 * k + 1])) << k;
  std::array<double, 16> back;
  xfm::inverse_real_dft(bins, back, xfm::Scale::InverseByN);
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(back[i], x[i], 1e-15);
}

template <class Layout>
void layout_agrees_with_ccs(int n) {
  const auto x = random_values<float>(n, n);
  std::vector<std::complex<float>> bins(n / 2 + 1);
  std::vector<float> cells(Layout::cells(n)), back(n), expected(n);
  xfm::real_dft(x, bins);
  xfm::real_dft<Layout>(x, cells);
  for (int k = 0; k <= n / 2; ++k) EXPECT_EQ(Layout::bin(cells.data(), n, k), bins[k]) << n << " points, bin " << k;
  xfm::inverse_real_dft<Layout>(cells, back);
  xfm::inverse_real_dft(bins.data(), expected.data(), n);
  EXPECT_EQ(back, expected) << n;
}

TEST(Cpp, LayoutsHoldTheSameBins) {
  for (const int n : {2, 3, 7, 8, 45, 64}) {
    layout_agrees_with_ccs<xfm::Ccs>(n);
    layout_agrees_with_ccs<xfm::Pack>(n);
    layout_agrees_with_ccs<xfm::Perm>(n);
  }
  const auto x = random_values<double>(12, 3);
  std::vector<double> fixed(12), cells(12);
  xfm::real_dft<12, xfm::Perm>(x.data(), fixed.data());
  ASSERT_EQ(xfmgDFTFwd_RToPerm_12_64f(x.data(), cells.data(), xfmScaleNone), xfmStatusOk);
  EXPECT_EQ(fixed, cells);
}

TEST(Cpp, HartleyAndWalshHadamardAreTheCFunctions) {
  const auto x = random_values<float>(256, 4);
  std::vector<float> y(256), expected(256), buffer(512);
  ASSERT_EQ(xfmgHartley_32f(x.data(), expected.data(), 33, xfmScaleNone), xfmStatusOk);
  xfm::hartley<33>(x.data(), y.data());
  EXPECT_EQ(y, expected);
  ASSERT_EQ(xfmgWHT_32f(x.data(), expected.data(), 8, xfmScaleFwdByN, nullptr), xfmStatusOk);
  ASSERT_LE(xfm::walsh_hadamard_buffer_size<float>(8), 2048);
  alignas(16) char memory[2048];
  for (void* work : {static_cast<void*>(memory), static_cast<void*>(nullptr)}) {
    xfm::walsh_hadamard(x, y, xfm::Scale::ForwardByN, work);
    EXPECT_EQ(y, expected);
    y.assign(256, 0);
    xfm::walsh_hadamard<8>(x.data(), y.data(), xfm::Scale::ForwardByN, work);
    EXPECT_EQ(y, expected);
  }
  xfm::walsh_hadamard<3>(x.data(), y.data());
  ASSERT_EQ(xfmgWHT_3_32f(x.data(), expected.data(), xfmScaleNone), xfmStatusOk);
  EXPECT_EQ(y, expected);
}

TEST(Cpp, AStateIsOwnedOnce) {
  const auto x = random_values<double>(512, 5);
  std::vector<double> y(512), back(512);
  xfm::Dct4<double> transform(512);
  xfm::Dct4<double> moved(std::move(transform));
  EXPECT_FALSE(transform);
  ASSERT_TRUE(moved);
  moved(std::span(x), std::span(y));
  moved(y.data(), back.data());
  for (int i = 0; i < 512; ++i) EXPECT_NEAR(back[i] / 256, x[i], 1e-14);
  EXPECT_EQ(moved(std::span(x).first(256), std::span(y), xfm::as_status), xfmStatusSizeError);
  EXPECT_EQ(transform(x.data(), y.data(), xfm::as_status), xfmStatusNullPointer);
  XfmStatus status = xfmStatusOk;
  EXPECT_FALSE(xfm::Dct4<float>::make(96, status));
  EXPECT_EQ(status, xfmStatusSizeError);
  EXPECT_THROW(xfm::Dct4<float>(96), xfm::Error);
}

TEST(Cpp, ErrorsAreThrownOrGiven) {
  std::vector<std::complex<float>> x(65), y(65), untouched(65, {7, 7});
  std::vector<float> cells(8);
  try {
    xfm::dft(x, y);
    FAIL() << "65 points";
  } catch (const xfm::Error& error) {
    EXPECT_EQ(error.status(), xfmStatusSizeError);
    EXPECT_STREQ(error.what(), xfm::status_text(xfmStatusSizeError));
  }
  y = untouched;
  EXPECT_EQ(xfm::dft(std::span(x).first(8), std::span(y).first(7), xfm::Scale::None, xfm::as_status), xfmStatusSizeError);
  EXPECT_EQ(xfm::dft(x.data(), y.data(), 8, static_cast<xfm::Scale>(3), xfm::as_status), xfmStatusFlagError);
  EXPECT_EQ(y, untouched);
  EXPECT_EQ(xfm::real_dft(std::span<const float>(cells), std::span(cells), xfm::Scale::None, xfm::as_status), xfmStatusSizeError);
  EXPECT_EQ(xfm::walsh_hadamard(std::span(cells).first(6), cells, xfm::Scale::None, nullptr, xfm::as_status), xfmStatusSizeError);
  EXPECT_EQ(xfm::hartley<5>(static_cast<const float*>(nullptr), cells.data(), xfm::Scale::None, xfm::as_status), xfmStatusNullPointer);
}

TEST(Cpp, ABatchStepsByItsStrides) {
  const auto x = random_complex<float>(40, 6);
  std::vector<std::complex<float>> y(60, {7, 7}), one(8);
  xfm::for_each({.count = 4, .src_stride = 10, .dst_stride = 15}, x.data(), y.data(),
                [](const auto* src, auto* dst) { xfm::dft<8>(src, dst); });
  for (int i = 0; i < 4; ++i) {
    xfm::dft<8>(x.data() + 10 * i, one.data());
    EXPECT_TRUE(std::equal(one.begin(), one.end(), y.begin() + 15 * i)) << i;
    EXPECT_EQ(y[15 * i + 8], std::complex<float>(7, 7)) << i;
  }
  int calls = 0;
  EXPECT_EQ(xfm::for_each({3, 0, 0}, x.data(), y.data(), [&](auto*, auto*) { return ++calls == 2 ? -6 : 0; }), xfmStatusSizeError);
  EXPECT_EQ(calls, 2);
}

}  // namespace
