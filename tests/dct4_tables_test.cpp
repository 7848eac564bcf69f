// The tables, bit by bit, against the stated rounding steps. Compiled so that no cosine and sine are merged.
#include <gtest/gtest.h>
#include <math.h>

#include <cstring>

#include "dct4_api.h"

using namespace xfm::dct4;

namespace {

float cos_pi(float x) { return cosf(static_cast<float>(x * 3.141592653589793)); }
float sin_pi(float x) { return sinf(static_cast<float>(x * 3.141592653589793)); }
double cos_pi(double x) { return cos(x * 3.141592653589793); }
double sin_pi(double x) { return sin(x * 3.141592653589793); }

const std::vector<int> kOrder32 = {0, 31, 16, 15, 4, 27, 20, 11, 8, 23, 24, 7, 12, 19, 28, 3,
                                   1, 30, 17, 14, 5, 26, 21, 10, 9, 22, 25, 6, 13, 18, 29, 2};
const std::vector<int> kOrder16 = {0, 15, 1, 14, 2, 13, 3, 12, 4, 11, 5, 10, 6, 9, 7, 8};
const std::vector<int> kOrder8 = {0, 7, 1, 6, 2, 5, 3, 4};
const std::vector<int> kOrder4 = {0, 3, 1, 2};

template <class T>
const Env4* synthesis_of(const Planned<T>& plan) {
  return first_of<Env4>(first_of<Env2>(plan.root()->stageOne)->stageOne);
}

template <class T>
std::vector<const Env8*> combiners_of(const Planned<T>& plan) {
  std::vector<const Env8*> found;
  for (const Env7* split : splits_of(plan)) found.push_back(first_of<Env8>(split->stageOne));
  return found;
}

template <class T>
std::vector<T> expected_synthesis_table(int n, int d) {
  constexpr int V = Api<T>::kLanes;
  const std::vector<int>& order = d == 32 ? kOrder32 : d == 16 ? kOrder16 : d == 8 ? kOrder8 : kOrder4;
  std::vector<T> table;
  for (int c = 0; c < n / (2 * d) / V; ++c)
    for (int r : order)
      for (const bool sine : {false, true})
        for (int l = 0; l < V; ++l) {
          const T x = static_cast<T>(2 * (2 * (V * c + l) + 1) * (2 * r + 1)) / static_cast<T>(8 * n);
          table.push_back(sine ? sin_pi(x) : cos_pi(x));
        }
  return table;
}

// x of every entry of a combine table, in order.
template <class T>
std::vector<T> expected_angles(int m, int d) {
  const int chunks = m / (2 * d);
  const auto t = [&](int i) { return (static_cast<T>(i) + T(0.5)) / static_cast<T>(m / d); };
  std::vector<T> inner, outer;
  for (int i = 0; i < chunks; ++i) {
    if (d == 8 || d == 32)
      for (T f : {0.25, 0.5, 0.75, 1.0, 1.25, 1.5, 1.75}) inner.push_back(t(i) * f);
    if (d == 16)
      for (T f : {0.5, 1.0, 1.5}) inner.push_back(t(i) * f);
    for (int j = 0; d > 8 && j < d / 4; ++j)
      for (T f : {1.0, 2.0, 3.0}) {
        const T shifted = t(i) + static_cast<T>(j);
        outer.push_back(shifted * (f / static_cast<T>(d / 2)));
      }
  }
  std::vector<T>&first = d == 32 && sizeof(T) == 8 ? outer : inner, &second = &first == &inner ? outer : inner;
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

template <class T>
std::vector<T> expected_combine_table(int m, int d) {
  std::vector<T> table;
  for (T x : expected_angles<T>(m, d)) {
    table.insert(table.end(), Api<T>::kLanes, cos_pi(x));
    table.insert(table.end(), Api<T>::kLanes, sin_pi(x));
  }
  return table;
}

template <class T>
void expect_bits(const void* table, const std::vector<T>& expected, int n) {
  const T* const found = static_cast<const T*>(table);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(table) % 32, 0u);
  for (size_t i = 0; i < expected.size(); ++i)
    ASSERT_EQ(std::memcmp(&found[i], &expected[i], sizeof(T)), 0)
        << "length " << n << ", element " << i << ": " << found[i] << ", not " << expected[i];
}

}  // namespace

template <class T>
class Dct4Tables : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4Tables, Precisions);

TYPED_TEST(Dct4Tables, HoldTheStatedBits) {
  std::vector<int> lengths = {128, 256, 512, 1024, 4096, 8192, 16384, 32768, 131072, 1 << 20};
  if (sizeof(TypeParam) == 8) lengths.insert(lengths.end(), {33, 64});
  for (int n : lengths) {
    const Planned<TypeParam> plan(n, 8);
    ASSERT_EQ(plan.status, xfmStatusOk);
    const Env4* env4 = synthesis_of(plan);
    expect_bits(env4->table, expected_synthesis_table<TypeParam>(n, plan.root()->radix), n);
    for (const Env8* env8 : combiners_of(plan))
      expect_bits(env8->table, expected_combine_table<TypeParam>(env8->wrap + 1, env8->radix), n);
  }
}

TEST(Dct4Tables, SpotValues) {
  const Planned<float> n128(128), n4096(4096), n8192(8192), n32768(32768);
  const Planned<double> d32768(32768);
  const float* rows = static_cast<const float*>(synthesis_of(n128)->table);
  EXPECT_NEAR(rows[0], std::cos(M_PI / 512), 1e-7);
  EXPECT_NEAR(rows[8], std::sin(M_PI / 512), 1e-7);
  EXPECT_NEAR(rows[16], std::cos(15 * M_PI / 512), 1e-7);
  EXPECT_EQ(rows[7], xfmgCosPi_32f(30.0f / 1024));
  EXPECT_EQ(static_cast<const float*>(combiners_of(n4096)[0]->table)[7], xfmgCosPi_32f(1.0f / 128));
  EXPECT_EQ(static_cast<const float*>(combiners_of(n8192)[0]->table)[48 * 8], xfmgCosPi_32f(1.0f / 256));
  EXPECT_EQ(static_cast<const float*>(combiners_of(n8192)[0]->table)[54 * 8], xfmgCosPi_32f(33.0f / 256));
  EXPECT_EQ(static_cast<const float*>(combiners_of(n32768)[0]->table)[0], xfmgCosPi_32f(1.0f / 256));
  EXPECT_EQ(static_cast<const double*>(combiners_of(d32768)[0]->table)[0], xfmgCosPi_64f(1.0 / 1024));
  EXPECT_NE(xfmgCosPi_32f(0.5f), 0.0f);
}
