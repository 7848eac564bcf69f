// Every public function on several threads at once, each with data of its own: results are those of one thread alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <barrier>
#include <cmath>
#include <cstring>
#include <thread>

#include "tests/every_function.h"
#include "xfm.hpp"

namespace {

using namespace every_function;

constexpr int kThreads = 4, kRounds = 3;

struct Result {
  std::string what;
  std::uint64_t digest;
};

// What the functions write over data of magnitude 2^exponent; `meet` is called before the first call of each.
std::vector<Result> results(const xfm::FunctionList& list, int exponent, const std::function<void()>& meet) {
  Arena arena;
  arena.fill(exponent);
  std::vector<Result> out;
  const xfm::Function* last = nullptr;
  for_every_call(arena, list, [&](const Call& call) {
    if (call.due != xfmStatusOk || call.what == "record" || (call.what.starts_with("flag") && !call.what.starts_with("flag 8"))) return;
    if (call.function != last) meet();
    last = call.function;
    std::memset(arena.target(), 0x5a, Arena::kBytes);
    const auto* const a = call.arguments;
    using Any = XfmStatus(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t);
    const XfmStatus status = reinterpret_cast<Any*>(call.address)(a[0], a[1], a[2], a[3], a[4]);
    Result result{call.function->name + ", " + call.what, static_cast<std::uint64_t>(status)};
    for (int i = 0; i < Arena::kBytes; i += 8) {  // FNV-1a, by words
      std::uint64_t word;
      std::memcpy(&word, arena.target() + i, sizeof word);
      result.digest = (result.digest ^ word) * 0x100000001b3u;
    }
    out.push_back(result);
  });
  return out;
}

TEST(Threads, EveryFunctionGivesTheBitsOfOneThread) {
  const auto list = xfm::FunctionList::read(XFM_FUNCTIONS);
  std::vector<std::vector<Result>> alone, together(kThreads);
  for (int t = 0; t < kThreads; ++t) alone.push_back(results(list, t, [] {}));
  ASSERT_GT(alone[0].size(), 4u * 1100);
  for (int round = 0; round < kRounds; ++round) {
    std::barrier same_function(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([&, t] { together[t] = results(list, t, [&] { same_function.arrive_and_wait(); }); });
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) {
      ASSERT_EQ(together[t].size(), alone[t].size());
      for (size_t i = 0; i < alone[t].size(); ++i)
        ASSERT_EQ(together[t][i].digest, alone[t][i].digest) << alone[t][i].what << ", thread " << t << ", round " << round;
    }
  }
}

// The lines of one array, dealt out in turn: neighbours in one line of the cache belong to different threads.
TEST(Threads, BatchesOfOneArrayAreDealtOut) {
  static constexpr std::size_t kLength = 7, kLines = 4096;
  std::vector<float> x(kLength * kLines), alone(x.size()), together(x.size());
  for (size_t i = 0; i < x.size(); ++i) x[i] = std::cos(static_cast<float>(i));
  const auto lines_from = [&](std::size_t first, std::size_t step, std::vector<float>& y) {
    const std::ptrdiff_t stride = kLength * step;
    xfm::for_each({kLines / step, stride, stride}, x.data() + kLength * first, y.data() + kLength * first,
                  [](const float* src, float* dst) { xfm::hartley<kLength>(src, dst); });
  };
  lines_from(0, 1, alone);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back([&, t] { lines_from(t, kThreads, together); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(together, alone);
}

}  // namespace
