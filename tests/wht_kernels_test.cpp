// Results of the Walsh-Hadamard kernels: every order, precision and flag, at any alignment, against the level order bit
// for bit, and against the definition.
#include <gtest/gtest.h>

#include <bit>

#include "tests/wht_model.h"

namespace {

using namespace xfm::test;

template <class T>
class Results : public testing::Test {};
using Types = testing::Types<float, double>;
TYPED_TEST_SUITE(Results, Types);

template <class T>
void expect_bits(const T* found, const std::vector<T>& expected, const std::string& what) {
  using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
  for (size_t i = 0; i < expected.size(); ++i)
    ASSERT_EQ(std::bit_cast<Bits>(found[i]), std::bit_cast<Bits>(expected[i]))
        << what << " element " << i << ": " << found[i] << " instead of " << expected[i];
}

template <class T>
std::string name_of(int order, int flag) {
  return "xfmgWHT_" + std::to_string(order) + "_" + type_name<T>() + " flag " + std::to_string(flag);
}

template <class T>
constexpr int kOffsets = 32 / sizeof(T);

// One call out of place with the arrays so many elements behind a 32-byte boundary.
template <class T>
void check_at(int order, int flag, int src_offset, int dst_offset, const std::vector<T>& input, const std::vector<T>& expected) {
  alignas(32) static T src_memory[(1 << kOrders) + kOffsets<T>], dst_memory[(1 << kOrders) + kOffsets<T>];
  alignas(32) static char buffer[73728 + 16];
  const size_t bytes = input.size() * sizeof(T);
  T *src = src_memory + src_offset, *dst = dst_memory + dst_offset;
  std::memcpy(src, input.data(), bytes);
  std::memset(dst_memory, 0xff, sizeof dst_memory);
  const int buffer_offset = 16 * ((src_offset + dst_offset) % 2);  // a buffer aligned to 16 bytes will do
  ASSERT_EQ(kernel<T>(order)(src, dst, flag, buffer + buffer_offset), xfmStatusOk);
  const std::string what = name_of<T>(order, flag) + " offsets " + std::to_string(src_offset) + ", " + std::to_string(dst_offset);
  expect_bits(dst, expected, what);
  ASSERT_EQ(std::memcmp(src, input.data(), bytes), 0) << what << ": src has changed";
}

TYPED_TEST(Results, EveryOrderFlagAndAlignmentHasTheBitsOfTheLevelOrder) {
  using T = TypeParam;
  for (int order = 1; order <= kOrders; ++order) {
    const std::vector<T> input = rough_values<T>(order, order);
    for (const int flag : kFlags) {
      const std::vector<T> expected = level_model(input, scale_of<T>(flag, order));
      for (int pair = 0; pair < kOffsets<T> * kOffsets<T>; ++pair) {
        if (order > 9 && pair % 3 != 0) continue;  // a third of the pairs has each offset on both sides
        ASSERT_NO_FATAL_FAILURE(check_at(order, flag, pair / kOffsets<T>, pair % kOffsets<T>, input, expected));
      }
    }
  }
}

TYPED_TEST(Results, InPlaceAndWithoutABufferTheSame) {
  using T = TypeParam;
  for (int order = 1; order <= kOrders; ++order)
    for (int offset = 0; offset < kOffsets<T>; ++offset) {
      const std::vector<T> input = rough_values<T>(order, 100 + order);
      std::vector<T> data(input.size() + kOffsets<T>);
      std::copy(input.begin(), input.end(), data.begin() + offset);
      ASSERT_EQ(kernel<T>(order)(data.data() + offset, data.data() + offset, xfmScaleBySqrtN, nullptr), xfmStatusOk);
      const std::vector<T> expected = level_model(input, scale_of<T>(xfmScaleBySqrtN, order));
      expect_bits(data.data() + offset, expected, name_of<T>(order, xfmScaleBySqrtN) + " in place");
    }
}

// The literals of 1/sqrt(N) in single precision, orders 1 to 7.
TEST(Scales, SinglePrecisionLiterals) {
  const float literals[] = {0.70710677f, 0.5f, 0.35355338f, 0.25f, 0.17677669f, 0.125f, 0.088388346f};
  for (int order = 1; order <= 7; ++order) {
    std::vector<float> x(size_t{1} << order), y(x.size());
    x[0] = 1;
    kernel<float>(order)(x.data(), y.data(), xfmScaleBySqrtN, nullptr);
    for (const float value : y) EXPECT_EQ(value, literals[order - 1]) << order;
  }
}

// Small integers leave no rounding, so the sum over the signs (-1)^popcount(i & j) must come out exactly.
TYPED_TEST(Results, DefinitionOnIntegers) {
  using T = TypeParam;
  for (int order = 1; order <= kOrders; ++order) {
    const int n = 1 << order;
    std::mt19937 random(order);
    std::vector<int> x(n);
    std::vector<T> src(n), dst(n);
    for (int j = 0; j < n; ++j) src[j] = static_cast<T>(x[j] = static_cast<int>(random() % 201) - 100);
    ASSERT_EQ(kernel<T>(order)(src.data(), dst.data(), xfmScaleNone, nullptr), xfmStatusOk);
    for (int i = 0; i < n; i += order > 10 ? 37 : 1) {
      int sum = 0;
      for (int j = 0; j < n; ++j) sum += std::popcount(static_cast<unsigned>(i & j)) % 2 ? -x[j] : x[j];
      ASSERT_EQ(dst[i], static_cast<T>(sum)) << name_of<T>(order, xfmScaleNone) << " element " << i;
    }
  }
}

TYPED_TEST(Results, InfinitiesReachEveryElement) {
  using T = TypeParam;
  for (int order = 1; order <= kOrders; ++order) {
    std::vector<T> x(size_t{1} << order, T(1)), y(x.size());
    x[1] = std::numeric_limits<T>::infinity();
    kernel<T>(order)(x.data(), y.data(), xfmScaleFwdByN, nullptr);
    for (size_t i = 0; i < y.size(); ++i) ASSERT_EQ(y[i], i & 1 ? -x[1] : x[1]) << order << " " << i;
  }
}

// src, dst and buffer end where memory ends, then begin where it begins; src may not be written at all. With an offset
// of one element the twin runs: a vector too far still leaves the page.
TYPED_TEST(Results, NoAccessOutsideTheArrays) {
  using T = TypeParam;
  for (int order = 1; order <= kOrders; ++order) {
    const size_t bytes = sizeof(T) << order, buffer_size = buffer_bytes<T>(order);
    const std::vector<T> input = rough_values<T>(order, 200 + order), expected = level_model(input, T(1));
    for (const bool at_end : {false, true})
      for (const size_t offset : {size_t{0}, sizeof(T)}) {
        const GuardedPages pages_src(bytes + offset), pages_dst(bytes + offset), pages_buffer(buffer_size);
        const auto place = [&](const GuardedPages& pages) { return at_end ? pages.at_end(bytes + offset) : pages.first() + offset; };
        T* src = reinterpret_cast<T*>(place(pages_src));
        T* dst = reinterpret_cast<T*>(place(pages_dst));
        std::memcpy(src, input.data(), bytes);
        pages_src.forbid_writing();
        void* buffer = at_end ? pages_buffer.at_end(buffer_size) : pages_buffer.first();
        ASSERT_EQ(kernel<T>(order)(src, dst, xfmScaleNone, buffer), xfmStatusOk);
        expect_bits(dst, expected, name_of<T>(order, xfmScaleNone) + (at_end ? " at the end" : " at the start"));
      }
  }
}

}  // namespace
