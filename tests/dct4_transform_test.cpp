// The transform: values against a 113-bit reference, and what it promises about memory, bits and threads.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <thread>

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

// A mapping between unreadable pages; arrays stand flush against its end or its start.
class Guarded {
 public:
  explicit Guarded(size_t bytes) : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    inner_ = (bytes + page_ - 1) / page_ * page_;
    base_ = static_cast<unsigned char*>(mmap(nullptr, inner_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    EXPECT_EQ(mprotect(base_ + page_, inner_, PROT_READ | PROT_WRITE), 0);
    std::memset(base_ + page_, 0xFF, inner_);  // quiet NaNs
  }
  ~Guarded() { munmap(base_, inner_ + 2 * page_); }
  Guarded(const Guarded&) = delete;
  template <class T>
  T* array(size_t n, bool at_end) const {
    return reinterpret_cast<T*>(at_end ? base_ + page_ + inner_ - n * sizeof(T) : base_ + page_);
  }

 private:
  size_t page_, inner_;
  unsigned char* base_;
};

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
      const Guarded source(bytes), target(bytes);
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
  for (int n : {2, 32, 128, 2048, 4096, 8192, 65536}) {
    const Planned<TypeParam> plan(n);
    const std::vector<unsigned char> before(plan.block, plan.block + plan.bytes);
    const std::vector<TypeParam> x = noise<TypeParam>(n);
    plan(x);
    std::vector<const unsigned char*> areas = {static_cast<const unsigned char*>(plan.root()->scratch)};
    if (n >= 4096) {
      const auto* env3 = static_cast<const Env3*>(EnvList_get(plan.root()->stageTwo, 0));
      const auto* env5 = static_cast<const Env5*>(EnvList_get(env3->stageOne, 0));
      areas.push_back(
          static_cast<const unsigned char*>(static_cast<const Env7*>(EnvList_get(env5->stageOne, 0))->scratch));
    }
    int changed = 0;
    for (int i = 0; i < plan.bytes; ++i) {
      if (plan.block[i] == before[i]) continue;
      ++changed;
      bool inside = false;
      for (const unsigned char* area : areas)
        inside = inside || (area != nullptr && plan.block + i >= area && plan.block + i < area + n * sizeof(TypeParam));
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
    const Guarded source(n * sizeof(TypeParam));
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

// Two states on two threads; a direct length's state on many.
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
