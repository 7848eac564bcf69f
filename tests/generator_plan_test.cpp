// Plans as text, and the arithmetic of their index maps.
#include <gtest/gtest.h>

#include "flows/numbers.h"
#include "flows/plan.h"
#include "generator/check.h"

namespace {

using namespace xfm;

TEST(GeneratorPlans, TextIsReadFromTheLeft) {
  const auto check = [](const std::string& text, int length, const std::string& expected, const std::string& mirror) {
    const Plan plan = parse_plan(text);
    EXPECT_EQ(plan.length, length) << text;
    EXPECT_EQ(to_text(plan), expected);
    EXPECT_EQ(to_text(mirrored(plan)), mirror);
    EXPECT_EQ(to_text(parse_plan(to_text(plan))), expected) << "read again";
  };
  check("4", 4, "4", "4");
  check("4 ct 2", 8, "4 ct 2", "2 ct 4");
  check("5 pf 2 pf 3", 30, "(5 pf 2) pf 3", "3 pf (2 pf 5)");
  check("2 ct (2 pf 13)", 52, "2 ct (2 pf 13)", "(13 pf 2) ct 2");
  check(" ( 3 ct 3 )pf 7 ", 63, "(3 ct 3) pf 7", "7 pf (3 ct 3)");
  check("(((2)))", 2, "2", "2");
  check("R5 pf (4 ct 2)", 40, "R5 pf (4 ct 2)", "(2 ct 4) pf R5");
  check("halves(3 ct 2; 4 pf 3)", 12, "halves(3 ct 2; 4 pf 3)", "halves(3 ct 2; 4 pf 3)");
  check("(3 pf 2) pf rows(R5; 5)", 30, "(3 pf 2) pf rows(R5; 5)", "rows(R5; 5) pf (2 pf 3)");
}

TEST(GeneratorPlans, BadTextIsRefusedWithItsReason) {
  const auto check = [](const std::string& text, const std::string& reason) {
    try {
      parse_plan(text);
      ADD_FAILURE() << "'" << text << "' is taken for a plan";
    } catch (const InputError& error) {
      EXPECT_EQ(error.what(), "plan '" + text + "': " + reason);
    } catch (const std::exception& error) {
      ADD_FAILURE() << "'" << text << "': " << error.what();
    }
  };
  check("", "expected a block, found ''");
  check("4 ct", "expected a block, found ''");
  check("ct 4", "expected a block, found 'ct'");
  check("4 xx 2", "text behind the plan");
  check("4 ct 2)", "text behind the plan");
  check("(4 ct 2", "expected ')'");
  check("3 pf 3", "the parts of 'pf' must be coprime");
  check("(2 pf 3) pf 2", "the parts of 'pf' must be coprime");
  check("-4", "expected a block, found '-'");
  check("halves(3; 4)", "the parts do not fit together");
  check("halves 3", "expected '('");
  check("rows(5; 7)", "the parts do not fit together");
  check("Rx", "expected a block, found 'Rx'");
  check("4x", "no block is named '4x'");
  check("0", "no length of a block in '0'");
  check("4 ct 1", "no length of a block in '1'");
  check("99999999999", "no length of a block in '99999999999'");
  check("R99999999999", "no length of a block in 'R99999999999'");
  check("1000 ct 1000 ct 1000", "too long");
}

TEST(GeneratorPlans, ResiduesAndRoots) {
  EXPECT_EQ(primitive_root(3), 2);
  EXPECT_EQ(primitive_root(23), 5);
  EXPECT_EQ(primitive_root(41), 6);
  EXPECT_EQ(power_mod(3, 0, 17), 1);
  EXPECT_EQ(power_mod(60, 59, 61), 60);
  for (int k = 0; k < 60; ++k) EXPECT_EQ(chinese_remainder(k % 4, 4, k % 15, 15), k);
}

}  // namespace
