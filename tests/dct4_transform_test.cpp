// The transform: values against a 113-bit reference, and what it promises about memory, bits and threads.
#include <gtest/gtest.h>
#include <dlfcn.h>
#include <pthread.h>

#include <cstring>
#include <thread>
#include <utility>

#include "dct4/stages.h"
#include "dct4_api.h"

using namespace xfm::dct4;

namespace {

#ifdef XFM_DCT4_SANITIZED
constexpr int kLongest = 1 << 13, kMost = 16;  // sanitized code is slow; it is here for its findings, not its values
#else
constexpr int kLongest = 1 << 20, kMost = 24;
#endif

// A fifth above the largest error measured; over few bins it varies by as much from one input to another.
template <class T>
double bound(int n) {
  const double stages = std::log2(static_cast<double>(n));
  return sizeof(T) == 4 ? 1.2e-7 + 1.1e-8 * stages : 2.6e-16 + 1.9e-17 * stages;
}

template <class T>
void expect_involution(const std::vector<T>& x, const std::vector<T>& twice) {
  const double scale = 2.0 / static_cast<double>(x.size());
  double square = 0, norm = 0;
  for (size_t i = 0; i < x.size(); ++i) {
    square += (scale * twice[i] - x[i]) * (scale * twice[i] - x[i]);
    norm += static_cast<double>(x[i]) * x[i];
  }
  EXPECT_LT(std::sqrt(square / norm), 2 * bound<T>(static_cast<int>(x.size()))) << x.size();
}

using test_arrays::GuardedPages;

// In the last two lengths the stages take turns; the last one's result goes past the caches if it is aligned.
const std::vector<int> kKinds = {2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 1 << 17, 1 << 19};

}  // namespace

template <class T>
class Dct4 : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4, Precisions);

TYPED_TEST(Dct4, IsTheSumFormula) {
  for (int n = 2; n <= kLongest; n *= 2) {
    const Planned<TypeParam> plan(n);
    ASSERT_EQ(plan.status, xfmStatusOk);
    const std::vector<TypeParam> x = noise<TypeParam>(n), y = plan(x);
    const double error = relative_error(x, y, n <= 512 ? 512 : kMost);
    std::printf("length %d: relative error %.2e\n", n, error);
    EXPECT_LT(error, bound<TypeParam>(n)) << n;
    expect_involution(x, plan(y));
  }
}

// Up to the largest lengths: minutes and gigabytes, not part of the daily run.
TYPED_TEST(Dct4, DISABLED_IsTheSumFormulaAtTheLargestLengths) {
  for (int n = 1 << 21; n <= Api<TypeParam>::kLargest; n *= 2) {
    typename Api<TypeParam>::State* state = nullptr;
    ASSERT_EQ(Api<TypeParam>::init_alloc(&state, n), xfmStatusOk);
    const std::vector<TypeParam> x = noise<TypeParam>(n);
    std::vector<TypeParam> y = x;
    ASSERT_EQ(Api<TypeParam>::transform(y.data(), y.data(), state), xfmStatusOk);
    const double error = relative_error(x, y, 12);
    std::printf("length %d: relative error %.2e\n", n, error);
    EXPECT_LT(error, bound<TypeParam>(n)) << n;
    Api<TypeParam>::transform(y.data(), y.data(), state);
    expect_involution(x, y);
    Api<TypeParam>::release(state);
  }
}

// A wrong sign or place hides in noise less well than in these.
TYPED_TEST(Dct4, ImpulsesAndZero) {
  for (int n : {2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048}) {
    const Planned<TypeParam> plan(n);
    std::vector<TypeParam> x(n);
    for (TypeParam v : plan(x)) ASSERT_EQ(v, 0) << n;
    for (int j = 0; j < n; j += 1 + n / 37) {
      x.assign(n, 0);
      x[j] = 1;
      const std::vector<TypeParam> y = plan(x);
      for (int k = 0; k < n; ++k) {
        const long long turn = (2LL * j + 1) * (2LL * k + 1) % (8LL * n);
        ASSERT_NEAR(y[k], std::cos(M_PI * static_cast<double>(turn) / (4.0 * n)), sizeof(TypeParam) == 4 ? 8e-7 : 2e-15)
            << "length " << n << ", x[" << j << "], bin " << k;
      }
    }
  }
}

// In place, at any element alignment and place in memory, whatever the scratch holds: the same bits, and no access beyond
// the arrays.
TYPED_TEST(Dct4, SameBitsEverywhere) {
  for (int n : kKinds) {
    const std::vector<TypeParam> x = noise<TypeParam>(n);
    const Planned<TypeParam> plan(n, 3);
    const std::vector<TypeParam> y = plan(x);
    const size_t bytes = n * sizeof(TypeParam);
    EXPECT_EQ(std::memcmp(plan(x).data(), y.data(), bytes), 0) << "again, length " << n;

    std::vector<TypeParam> in_place = x;
    Api<TypeParam>::transform(in_place.data(), in_place.data(), plan.state);
    EXPECT_EQ(std::memcmp(in_place.data(), y.data(), bytes), 0) << "in place, length " << n;

    if (plan.root()->scratch != nullptr) {
      std::memset(plan.root()->scratch, 0xFF, bytes);
    }
    EXPECT_EQ(std::memcmp(plan(x).data(), y.data(), bytes), 0) << "other scratch, length " << n;

    for (const bool at_end : {false, true}) {
      const GuardedPages source(bytes), target(bytes);
      TypeParam* const from = source.array<TypeParam>(n, at_end);
      TypeParam* const to = target.array<TypeParam>(n, at_end);
      std::memcpy(from, x.data(), bytes);
      Api<TypeParam>::transform(from, to, plan.state);
      EXPECT_EQ(std::memcmp(to, y.data(), bytes), 0) << "guarded, length " << n;
    }
    std::vector<TypeParam> source(n + 16), target(n + 16);
    for (int from = 0; from < 8; ++from) {
      const int to = (3 * from + 1) % 8;
      std::memcpy(source.data() + from, x.data(), bytes);
      target.assign(n + 16, 77);
      Api<TypeParam>::transform(source.data() + from, target.data() + to, plan.state);
      EXPECT_EQ(std::memcmp(target.data() + to, y.data(), bytes), 0) << "offsets " << from << " " << to << ", length " << n;
      for (int i = 0; i < n + 16; ++i) {
        const bool outside = i < to || i >= to + n;
        ASSERT_TRUE(!outside || target[i] == 77) << "length " << n << " writes element " << i - to;
      }
    }
  }
}

TYPED_TEST(Dct4, WritesNothingOfTheStateButScratch) {
  constexpr int kTwoLevels = 1 << 17;
  for (int n : {2, 32, 128, 2048, 4096, 8192, 65536, kTwoLevels}) {
    const Planned<TypeParam> plan(n);
    const std::vector<unsigned char> before(plan.block, plan.block + plan.bytes);
    const std::vector<TypeParam> x = noise<TypeParam>(n);
    plan(x);
    std::vector<const void*> areas = {plan.root()->scratch};
    for (const Env7* split : splits_of(plan)) areas.push_back(split->scratch);
    int changed = 0;
    for (int i = 0; i < plan.bytes; ++i) {
      if (plan.block[i] == before[i]) continue;
      ++changed;
      bool inside = false;
      for (const void* area : areas) {
        const auto* const first = static_cast<const unsigned char*>(area);
        inside = inside || (first != nullptr && plan.block + i >= first && plan.block + i < first + n * sizeof(TypeParam));
      }
      ASSERT_TRUE(inside) << "length " << n << " writes byte " << i;
    }
    EXPECT_EQ(changed > 0, n > Api<TypeParam>::kLastDirect);
  }
}

// 2^k + 1 passes the tests of a length. Each of its outputs but the reflected ones stands as for 2^k; these lie two
// elements on, the last one behind the array.
TYPED_TEST(Dct4, LengthsOneAboveAPowerRun) {
  std::vector<int> lengths = {129, 257, 513, 1025, 2049, 4097, 32769, 131073, 524289};
  if (sizeof(TypeParam) == 8) lengths.insert(lengths.end(), {33, 65});
  for (int n : lengths) {
    const Planned<TypeParam> plan(n);
    ASSERT_EQ(plan.status, xfmStatusOk) << n;
    const std::vector<TypeParam> x = noise<TypeParam>(n);
    const size_t line = 64 / sizeof(TypeParam);
    std::vector<TypeParam> room(n + 3 + line, 77);
    TypeParam* const y = room.data() + line - reinterpret_cast<uintptr_t>(room.data()) / sizeof(TypeParam) % line;
    const GuardedPages source(n * sizeof(TypeParam));
    std::memcpy(source.array<TypeParam>(n, true), x.data(), n * sizeof(TypeParam));
    EXPECT_EQ(Api<TypeParam>::transform(source.array<TypeParam>(n, true), y, plan.state), xfmStatusOk);
    const int d = plan.root()->radix, m = n / d;
    std::vector<int> unwritten, expected;
    for (int i = 0; i < n + 3; ++i)
      if (y[i] == 77) unwritten.push_back(i);
    for (int u = 0; u < d; ++u) expected.insert(expected.end(), {m * u + m / 2, m * u + m / 2 + 1});
    expected.insert(expected.end(), {n + 1, n + 2});
    EXPECT_EQ(unwritten, expected) << n;
  }
}

TYPED_TEST(Dct4, AnUnknownRuleGivesAStatus) {
  const int n = 1024;
  const Planned<TypeParam> plan(n);
  const std::vector<TypeParam> x = noise<TypeParam>(n);
  std::vector<TypeParam> y(n, TypeParam{7});
  for (const int rule : {0, 8, -1}) {
    plan.root()->rule = rule;
    EXPECT_EQ(Api<TypeParam>::transform(x.data(), y.data(), plan.state), -5) << rule;
    EXPECT_EQ(y, std::vector<TypeParam>(n, TypeParam{7}));
  }
}

// Below the root a stage says so to its caller, which does not listen: the transform has done without it.
TYPED_TEST(Dct4, AnUnknownRuleBelowTheRootLeavesItsStageOut) {
  using T = TypeParam;
  using Stage = StageFunctions<T>;
  const int n = 4096;
  const Planned<T> plan(n);
  const std::vector<T> x = noise<T>(n), untouched(n, T{7});
  auto* const env2 = const_cast<Env2*>(first_of<Env2>(plan.root()->stageOne));
  auto* const env3 = const_cast<Env3*>(first_of<Env3>(plan.root()->stageTwo));
  auto* const env4 = const_cast<Env4*>(first_of<Env4>(env2->stageOne));
  auto* const env5 = const_cast<Env5*>(first_of<Env5>(env3->stageOne));
  auto* const env7 = const_cast<Env7*>(first_of<Env7>(env5->stageOne));
  auto* const env8 = const_cast<Env8*>(first_of<Env8>(env7->stageOne));
  auto* const env9 = const_cast<Env9*>(first_of<Env9>(env7->stageTwo));
  alignas(32) static T room[1 << 12];
  const auto with_rule = [&](int32_t& rule, int unknown, auto stage) {
    std::copy(untouched.begin(), untouched.end(), room);
    std::vector<T> y = untouched;
    const int32_t known = std::exchange(rule, unknown);
    EXPECT_EQ(stage(), -5) << unknown;
    EXPECT_TRUE(std::equal(untouched.begin(), untouched.end(), room));
    EXPECT_EQ(Api<T>::transform(x.data(), y.data(), plan.state), xfmStatusOk);
    rule = known;
    return y;
  };
  const auto no_stage = [] { return XfmStatus{-5}; };
  for (const int unknown : {0, 2, 8, -1}) {
    with_rule(env5->rule, unknown, [&] { return Stage::env5_compute(env5, room, x.data()); });
    with_rule(env7->rule, unknown, [&] { return Stage::env7_compute(env7, room, x.data(), 0, env5->wrap, kColumns); });
    with_rule(env8->rule, unknown, [&] { return Stage::env8_compute(env8, room, x.data(), kColumns, kColumns, {0, 1}); });
    with_rule(env9->rule, unknown, [&] { return Stage::env9_compute(env9, room, x.data(), 0, env5->wrap); });
    EXPECT_EQ(with_rule(env4->rule, unknown, [&] { return Stage::env4_compute(env4, room, x.data(), {0, 1}); }), untouched);
    EXPECT_EQ(with_rule(env2->rule, unknown, no_stage), untouched);
    with_rule(env3->rule, unknown, no_stage);
  }
}

#if defined(XFM_DCT4_PLAIN_ORDER_MODULE)
// Turns, buffers, rows fetched ahead and rows past the caches change no bit: the same units compiled without any of them.
TYPED_TEST(Dct4, HasTheBitsOfThePlainOrder) {
  using T = TypeParam;
  void* const plain = dlopen(XFM_DCT4_PLAIN_ORDER_MODULE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(plain, nullptr) << dlerror();
  const auto transform = reinterpret_cast<decltype(Api<T>::transform)>(dlsym(plain, (std::string("xfmgDCT4_") + Api<T>::kName).c_str()));
  ASSERT_NE(transform, nullptr);
  ASSERT_NE(transform, Api<T>::transform);
  for (int n = 64; n <= 1 << 20; n *= 2) {
    const Planned<T> plan(n);
    const std::vector<T> x = noise<T>(n);
    const size_t bytes = n * sizeof(T);
    const GuardedPages quick(bytes + 64), in_order(bytes);
    for (const int offset : {0, 1}) {  // rows go past the caches to whole lines only
      T* const to = quick.array<T>(n, false) + offset;
      ASSERT_EQ(Api<T>::transform(x.data(), to, plan.state), xfmStatusOk);
      ASSERT_EQ(transform(x.data(), in_order.array<T>(n, false), plan.state), xfmStatusOk);
      ASSERT_EQ(std::memcmp(to, in_order.first(), bytes), 0) << "length " << n << ", offset " << offset;
    }
  }
  dlclose(plain);
}
#endif

#ifndef XFM_DCT4_SANITIZED
// The stack of a thread that only transforms, painted before; the lengths have one, two and three levels.
TYPED_TEST(Dct4, TakesLessThan40KilobytesOfStack) {
  constexpr size_t kStack = 1 << 20, kThread = 4096;  // what a thread takes before it does anything
  for (const int n : {4096, 1 << 17, 1 << 20}) {
    const Planned<TypeParam> plan(n);
    const std::vector<TypeParam> x = noise<TypeParam>(n);
    std::vector<TypeParam> y(n);
    auto transform = [&] { Api<TypeParam>::transform(x.data(), y.data(), plan.state); };
    std::vector<unsigned char> stack(kStack + 64, 0x5C);
    unsigned char* const lowest = stack.data() + (64 - reinterpret_cast<uintptr_t>(stack.data()) % 64);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstack(&attributes, lowest, kStack), 0);
    pthread_t thread;
    const auto run = [](void* f) -> void* { return (*static_cast<decltype(transform)*>(f))(), nullptr; };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &transform), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    size_t untouched = 0;
    while (untouched < kStack && lowest[untouched] == 0x5C) ++untouched;
    EXPECT_LT(kStack - untouched, 40 * 1024 + kThread) << n;
    EXPECT_NE(y[0], TypeParam{0});
  }
}
#endif

// Two states on two threads; a direct length's state on both.
TYPED_TEST(Dct4, Threads) {
  const auto run = [](const Planned<TypeParam>& plan, int rounds) {
    const std::vector<TypeParam> x = noise<TypeParam>(plan.length), y = plan(x);
    for (int i = 0; i < rounds; ++i)
      if (std::memcmp(plan(x).data(), y.data(), x.size() * sizeof(TypeParam)) != 0) return false;
    return true;
  };
  for (int n : {32, 256, 4096}) {
    const Planned<TypeParam> first(n), second(n);
    const Planned<TypeParam>& other = n == 32 ? first : second;
    bool good[2] = {};
    std::thread a([&] { good[0] = run(first, 300); }), b([&] { good[1] = run(other, 300); });
    a.join();
    b.join();
    EXPECT_TRUE(good[0] && good[1]) << n;
  }
}
