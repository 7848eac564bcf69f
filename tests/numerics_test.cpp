// The numeric environment: what docs/numerics.md says of rounding modes, flush-to-zero, subnormals and exception flags, of
// every public function.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>

#include "tests/every_function.h"

namespace {

using namespace every_function;

constexpr unsigned kDefault = 0x1f80, kDown = 0x3f80, kUp = 0x5f80, kToZero = 0x7f80, kFlush = 0x9fc0;
constexpr unsigned kInvalid = 1, kDivide = 4, kOverflow = 8, kUnderflow = 16, kInexact = 32;

struct Result {
  std::string what;  // function and arguments
  bool is_double;
  std::vector<double> values;
  unsigned raised;
};

const xfm::FunctionList& list() {
  static const auto all = xfm::FunctionList::read(XFM_FUNCTIONS);
  return all;
}

// What every function writes under one MXCSR, over data of one magnitude; unscaled and by 1/sqrt(N).
std::vector<Result> results(unsigned mxcsr, int exponent, bool zeros = false) {
  static Arena arena;
  arena.fill(exponent);
  if (zeros) std::memset(arena.singles(), 0, 2 * Arena::kBytes);
  std::vector<Result> out;
  for_every_call(arena, list(), [&](const Call& call) {
    if (call.due != xfmStatusOk) return;
    const bool writes = call.function->arguments.find("dst") != std::string::npos;
    if (call.what.starts_with("flag") && call.what != "flag 8 offset 0" && call.what != "flag 4 offset 0") return;
    std::memset(arena.target(), 0x5a, Arena::kBytes);
    const auto* const a = call.arguments;
    using Any = XfmStatus(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t);
    auto* const run = reinterpret_cast<Any*>(call.address);
    _mm_setcsr(mxcsr);
    const XfmStatus status = run(a[0], a[1], a[2], a[3], a[4]);
    const unsigned raised = _mm_getcsr() & 0x3d;
    _mm_setcsr(kDefault);
    if (call.what != "record") {
      EXPECT_EQ(status, xfmStatusOk) << call.function->name;
    }
    Result result{call.function->name + ", " + call.what, call.function->type.starts_with("64"), {}, raised};
    int bytes = Arena::kBytes;
    while (writes && bytes > 0 && arena.target()[bytes - 1] == 0x5a) --bytes;
    const int size = result.is_double ? 8 : 4;
    bytes = (bytes + size - 1) / size * size;
    for (int i = 0; writes && i < bytes / 4; ++i) {
      if (result.is_double && i % 2 != 0) continue;
      double value;
      float single;
      std::memcpy(&value, arena.target() + 4 * i, 8);
      std::memcpy(&single, arena.target() + 4 * i, 4);
      result.values.push_back(result.is_double ? value : single);
    }
    out.push_back(std::move(result));
  });
  return out;
}

double epsilon(const Result& r) { return r.is_double ? 0x1p-52 : 0x1p-23; }
double smallest(const Result& r) {
  return r.is_double ? std::numeric_limits<double>::denorm_min() : std::numeric_limits<float>::denorm_min();
}

struct RoundingMode {
  const char* name;
  unsigned mxcsr;
  double limit;  // relative distance of a result from the default mode's, in the type's epsilon
};
class RoundingModes : public testing::TestWithParam<RoundingMode> {};

TEST_P(RoundingModes, MoveResultsByAFewRoundings) {
  const auto due = results(kDefault, 0), found = results(GetParam().mxcsr, 0);
  ASSERT_EQ(due.size(), found.size());
  double most = 0;
  int moved = 0;
  std::string where;
  for (std::size_t i = 0; i < due.size(); ++i) {
    double difference = 0, norm = 0;
    for (std::size_t k = 0; k < due[i].values.size(); ++k) {
      difference += std::pow(found[i].values[k] - due[i].values[k], 2);
      norm += std::pow(due[i].values[k], 2);
    }
    if (norm == 0) continue;
    const double distance = std::sqrt(difference / norm) / epsilon(due[i]);
    moved += distance > 0;
    if (distance > most) most = distance, where = due[i].what;
  }
  std::printf("%zu results, %d moved, at most %.1f epsilon (%s)\n", due.size(), moved, most, where.c_str());
  EXPECT_LT(most, GetParam().limit) << where;
  EXPECT_GT(moved, 1000) << "the mode has no effect: nothing was tested";
}

INSTANTIATE_TEST_SUITE_P(Numerics, RoundingModes,
                         testing::Values(RoundingMode{"down", kDown, 24}, RoundingMode{"up", kUp, 24}, RoundingMode{"to_zero", kToZero, 24}),
                         [](const auto& info) { return info.param.name; });

TEST(Numerics, FlushToZeroChangesNoNormalResult) {
  const auto due = results(kDefault, 0), found = results(kFlush, 0);
  ASSERT_EQ(due.size(), found.size());
  std::size_t cells = 0;
  for (std::size_t i = 0; i < due.size(); ++i) {
    cells += due[i].values.size();
    EXPECT_EQ(std::memcmp(due[i].values.data(), found[i].values.data(), due[i].values.size() * sizeof(double)), 0) << due[i].what;
  }
  std::printf("%zu values of %zu results\n", cells, due.size());
}

// Inputs below the smallest normal number: singles at 2^-130, doubles at 2^-1026 (two passes, since they share no exponent).
class Subnormals : public testing::TestWithParam<bool> {};

TEST_P(Subnormals, AreTransformedLikeOthersAndFlushedOnRequest) {
  const bool is_double = GetParam();
  const int exponent = is_double ? -1026 : -130;
  const auto due = results(kDefault, 0), found = results(kDefault, exponent), flushed = results(kFlush, exponent);
  double most = 0;
  std::string where;
  for (std::size_t i = 0; i < due.size(); ++i) {
    if (due[i].is_double != is_double) continue;
    for (std::size_t k = 0; k < due[i].values.size(); ++k) {
      const double off = std::fabs(found[i].values[k] - std::ldexp(due[i].values[k], exponent)) / smallest(due[i]);
      if (off > most) most = off, where = due[i].what;
      EXPECT_EQ(flushed[i].values[k], 0) << due[i].what;
    }
  }
  std::printf("at most %.1f smallest subnormals off (%s)\n", most, where.c_str());
  EXPECT_LT(most, 160) << where;
  EXPECT_GT(most, 0);
}
INSTANTIATE_TEST_SUITE_P(Numerics, Subnormals, testing::Bool(),
                         [](const auto& info) { return info.param ? "double" : "single"; });

TEST(Numerics, OnlyInexactIsRaisedOnOrdinaryData) {
  int inexact = 0;
  for (const auto& result : results(kDefault, 0)) {
    EXPECT_EQ(result.raised & (kInvalid | kDivide | kOverflow | kUnderflow), 0U) << result.what;
    inexact += (result.raised & kInexact) != 0;
  }
  EXPECT_GT(inexact, 1000);
  for (const auto& result : results(kDefault, 0, true))  // zeros are transformed exactly
    if (result.what.find("DCT4Init") == std::string::npos) {
      EXPECT_EQ(result.raised, 0U) << result.what;
    }
  unsigned beyond = 0;
  for (const auto& result : results(kDefault, 127)) beyond |= result.is_double ? 0 : result.raised;
  EXPECT_NE(beyond & kOverflow, 0U) << "an overflow raises its flag";
}

// How much slower subnormal data are: printed, for docs/numerics.md; nothing is asked of it.
TEST(Numerics, DISABLED_TimeOfSubnormals) {
  std::map<bool, std::vector<std::pair<double, std::string>>> ratios;
  static Arena arena;
  for_every_call(arena, list(), [&](const Call& call) {
    if (call.function->kind != xfm::FunctionKind::Kernel || call.what != "flag 8 offset 0") return;
    const bool is_double = call.function->type.starts_with("64");
    using Kernel = XfmStatus(const void*, void*, int, void*);
    auto* const run = reinterpret_cast<Kernel*>(call.address);
    double best[2] = {1e9, 1e9};
    for (int round = 0; round < 40; ++round) {
      arena.fill(round % 2 == 0 ? 0 : is_double ? -1026 : -130);
      const auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < 50; ++i) run(arena.source(call.function->type), arena.target(), 8, arena.buffer());
      const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
      best[round % 2] = std::min(best[round % 2], time.count());
    }
    ratios[is_double].emplace_back(best[1] / best[0], call.function->name);
  });
  for (auto& [is_double, list] : ratios) {
    std::sort(list.begin(), list.end());
    std::printf("%s: median %.2f, most %.2f (%s)\n", is_double ? "double" : "single", list[list.size() / 2].first, list.back().first,
                list.back().second.c_str());
  }
}

}  // namespace
