// The text of every wide operation, compiled for the widest target, gives what its execution gives.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "generator/execute.h"
#include "tests/wide_operations.h"

extern void (*const kWideOperations[])(const void*, void*);

namespace {

using xfm::Elements;

template <class Real>
Elements run(void (*operation)(const void*, void*), const Elements& source, const Elements& target) {
  std::vector<Real> x(source.begin(), source.end()), y(target.begin(), target.end());
  operation(x.data(), y.data());
  return {y.begin(), y.end()};
}

TEST(WideOperations, TextDoesWhatExecutionDoes) {
  Elements x(32);
  for (int i = 0; i < 32; ++i) x[i] = static_cast<float>(i % 5 == 4 ? -0.0 : (i * 37 % 64 - 31) / 7.0);
  int number = 0;
  for (const wide_operations::Case& c : wide_operations::cases()) {
    std::vector<Elements> expected{Elements(16, 99)};
    const Elements got = c.single ? run<float>(kWideOperations[number], x, expected[0]) : run<double>(kWideOperations[number], x, expected[0]);
    xfm::execute(c.program, {x}, 1, expected);
    const xfm::Inst& last = c.program.insts().back();
    for (int k = 0; k < 16; ++k)
      EXPECT_EQ(std::bit_cast<uint64_t>(got[k]), std::bit_cast<uint64_t>(expected[0][k]))
          << "case " << number << ", operation " << static_cast<int>(last.op) << " on " << xfm::type_name(last.type) << ", element " << k;
    ++number;
  }
  EXPECT_GT(number, 100);
}

}  // namespace
