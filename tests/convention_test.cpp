// The calling convention, of every public function: what a caller may rely on across the call, at every place of the stack
// that the convention admits, in every numeric environment, with rubbish in the unused halves of int arguments.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

#include "tests/convention/probe.h"
#include "tests/every_function.h"

namespace {

using namespace every_function;
using convention::Probe;

alignas(64) char stack[1 << 18];

Probe probe_of(const void* function, int place, std::uint32_t mxcsr) {
  Probe probe;
  probe.function = function;
  probe.stack = stack + sizeof stack - 4096 + 16 * place;  // rsp at 0, 16, 32, 48 of 64 before the call
  probe.mxcsr = mxcsr;
  return probe;
}

struct Environment {
  const char* name;
  std::uint32_t mxcsr;
};
constexpr Environment kEnvironments[] = {{"default", 0x1f80},   {"down", 0x3f80},           {"up", 0x5f80},
                                         {"to zero", 0x7f80}, {"FTZ and DAZ", 0x9fc0}};

class Convention : public testing::TestWithParam<Environment> {};

TEST_P(Convention, EveryFunctionKeepsIt) {
  const auto list = xfm::FunctionList::read(XFM_FUNCTIONS);
  static Arena arena;
  int calls = 0, failures = 0;
  const int functions = for_every_call(arena, list, [&](const Call& call) {
    for (int place = 0; place < 4; ++place) {
      // A state that is made or released is so once.
      if (place != 0 && (call.function->name.find("Alloc") != std::string::npos || call.function->name.find("Free") != std::string::npos)) continue;
      auto probe = probe_of(call.address, place, GetParam().mxcsr);
      std::copy(std::begin(call.arguments), std::end(call.arguments), probe.arguments);
      convention_probe(&probe);
      ++calls;
      const auto departures = convention::departures(probe);
      const bool right_status = call.what == "record" || static_cast<std::int32_t>(probe.result) == call.due;
      if ((departures.empty() && right_status) || ++failures > 20) continue;
      ADD_FAILURE() << call.function->name << ", " << call.what << ", rsp at " << 16 * place << " of 64: "
                    << (departures.empty() ? "status " + std::to_string(static_cast<std::int32_t>(probe.result)) : departures);
    }
  });
  EXPECT_EQ(functions, static_cast<int>(list.functions().size()));
  EXPECT_EQ(functions, 1193);
  EXPECT_EQ(failures, 0);
  RecordProperty("functions", functions);
  std::printf("%d functions, %d calls\n", functions, calls);
}

INSTANTIATE_TEST_SUITE_P(All, Convention, testing::ValuesIn(kEnvironments), [](const auto& info) {
  std::string name = info.param.name;
  std::erase(name, ' ');
  return name;
});

extern "C" {
#define FAULTS(X) X(none) X(rbx) X(rbp) X(r12) X(r13) X(r14) X(r15) X(rsp) X(direction) X(rounding) X(flush) X(mask) \
  X(x87_word) X(x87_stack) X(mmx) X(ymm0) X(ymm7) X(ymm15) X(zmm0) X(zmm15)
#define DECLARE(name) void fault_##name();
FAULTS(DECLARE)
}

// The harness sees each fault, and names it.
TEST(ConventionHarness, SeesEveryFault) {
  struct Fault {
    std::string name;
    void (*function)();
  };
#define ROW(name) {#name, fault_##name},
  const Fault faults[] = {FAULTS(ROW)};
  for (const auto& fault : faults) {
    auto probe = probe_of(reinterpret_cast<const void*>(fault.function), 0, 0x1f80);
    if (fault.name.starts_with("zmm") && !probe.wide) continue;  // no such registers
    convention_probe(&probe);
    const auto said = convention::departures(probe);
    if (fault.name == "none") EXPECT_EQ(said, "");
    else if (fault.name.starts_with("r") && fault.name.size() == 3) EXPECT_EQ(said, fault.name);
    else if (fault.name.find("mm") == 1) EXPECT_EQ(said, "upper half of " + fault.name);
    else EXPECT_NE(said, "") << fault.name;
  }
}

}  // namespace
