// Plans as text, the arithmetic of their index maps, and the plans of all rows against the stages that they are to have.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <map>

#include "flows/numbers.h"
#include "flows/rows.h"
#include "generator/check.h"

namespace {

using namespace xfm;

TEST(Plans, TextIsReadFromTheLeft) {
  const PlanBlocks blocks = {{"R5", parse_plan("rader(4; 4)")}};
  const auto check = [&](const std::string& text, int length, const std::string& expected, const std::string& mirror) {
    const Plan plan = parse_plan(text, blocks);
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
  check("R5 pf (4 ct 2)", 40, "rader(4; 4) pf (4 ct 2)", "(2 ct 4) pf rader(4; 4)");
  check("halves(3 ct 2; 4 pf 3)", 12, "halves(3 ct 2; 4 pf 3)", "halves(3 ct 2; 4 pf 3)");
  check("(3 pf 2) ct rows(3; 3; turned)", 18, "(3 pf 2) ct rows(3; 3; turned)", "rows(3; 3; turned) ct (2 pf 3)");
  check("(2 pf 5) ct rows(4; 4; 8)", 40, "(2 pf 5) ct rows(4; 4; 8)", "rows(4; 4; 8) ct (5 pf 2)");
  check("5 pf apart(3 pf 2)", 30, "5 pf apart(3 pf 2)", "apart(3 pf 2) pf 5");
}

TEST(Plans, BadTextIsRefusedWithItsReason) {
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
  check("halves(3)", "expected ';'");
  check("rows(5; 7)", "the parts do not fit together");
  check("rows(5; 5; 5)", "the parts do not fit together");
  check("rows(turned; 5)", "expected a block, found 'turned'");
  check("rader(4; 6)", "the parts do not fit together");
  check("rader(8; 8)", "Rader's method at 9, which is no prime from 5");
  check("R5", "no block is named 'R5'");
  check("4x", "no block is named '4x'");
  check("0", "no length of a block in '0'");
  check("4 ct 1", "no length of a block in '1'");
  check("99999999999", "no length of a block in '99999999999'");
  check("1000 ct 1000 ct 1000", "too long");
}

TEST(Plans, Numberings) {
  const Plan link = parse_plan("3 pf 4"), prime = parse_plan("rader(3 pf 4; halves(3 pf 2; 4 pf 3))");
  const Plan steps = numbered(link, "2,3,1"), root = numbered(prime, "7,4");
  EXPECT_EQ(steps.numbering.element, 2);
  EXPECT_EQ(steps.numbering.row, 3);
  EXPECT_TRUE(steps.numbering.conjugate);
  EXPECT_EQ(root.numbering.root, 7);
  EXPECT_EQ(root.numbering.start, 4);
  for (const char* bad : {"1,1", "3,1,0", "1,2,0", "1,1,2", "1,,0", "a,1,0"}) EXPECT_THROW(numbered(link, bad), InputError) << bad;
  for (const char* bad : {"7", "3,1", "13,1", "7,13"}) EXPECT_THROW(numbered(prime, bad), InputError) << bad;
  EXPECT_THROW(numbered(parse_plan("3 ct 3"), "1,1,0"), InputError);
}

TEST(Plans, ResiduesAndRoots) {
  EXPECT_EQ(primitive_root(3), 2);
  EXPECT_EQ(primitive_root(23), 5);
  EXPECT_EQ(primitive_root(41), 6);
  EXPECT_EQ(power_mod(3, 0, 17), 1);
  EXPECT_EQ(power_mod(60, 59, 61), 60);
  for (int a = 1; a < 61; ++a) EXPECT_EQ(a * inverse_mod(a, 61) % 61, 1);
  EXPECT_EQ(residue(-7, 5), 3);
  for (int k = 0; k < 60; ++k) EXPECT_EQ(chinese_remainder(k % 4, 4, k % 15, 15), k);
}

// ---- the plans of all rows -------------------------------------------------------------------------------------------

const std::filesystem::path kPlans = XFM_PLANS;

std::map<int, TableRow> reference() {
  static const Table table = Table::read(XFM_REFERENCE_PLANS, {"N", "complex 32", "complex 64", "forward", "second", "inverse", "Hartley"});
  std::map<int, TableRow> rows;
  for (const TableRow& row : table.rows()) rows.emplace(row.integer("N"), row);
  return rows;
}

// The radices of the stages; a block by Rader's method inside a plan counts as its prime.
std::vector<int> stages(const Plan& plan) {
  if (plan.kind == Plan::Kind::Rader || plan.kind == Plan::Kind::Block) {
    if (!std::has_single_bit(static_cast<unsigned>(plan.length))) return {plan.length};
    return std::vector<int>(std::countr_zero(static_cast<unsigned>(plan.length)), 2);
  }
  std::vector<int> all = plan.kind == Plan::Kind::Halves ? std::vector{2} : std::vector<int>{};
  for (const Plan* part : {&plan.first(), plan.link() ? &plan.second() : nullptr})
    if (part)
      for (int radix : stages(*part)) all.push_back(radix);
  return all;
}

std::string dotted(const std::vector<int>& order) {
  std::string text;
  for (int radix : order) text += (text.empty() ? "" : ".") + std::to_string(radix);
  return text;
}

struct RealTable {
  const char* file;
  std::vector<std::string> columns;  // all of them
  const char* reference;
};

// The order of stages from the side of the samples. A transposed Hartley flow runs its plan backwards, and what comes first
// in its Rader blocks is the second transform without the stage that joins a bin and its conjugate.
TEST(Plans, RealRowsHaveTheStagesOfTheReference) {
  const PlanBlocks blocks = read_blocks(kPlans / "real_blocks.tsv", 8);
  const RealTable tables[] = {
      {"real_forward_plans.tsv", {"N", "Add", "Mul", "Roots", "Non-root", "32f single add", "32f double add", "Widen", "Narrow, inner", "Narrow, last", "Plan", "Numbering", "Sums in double"}, "forward"},
      {"real_inverse_plans.tsv", {"N", "Add", "Mul", "Doublings", "Folded doublings", "Roots", "Non-root", "32f single add", "32f double add", "Widen", "Narrow", "Plan", "Sums in double"}, "inverse"},
      {"hartley_plans.tsv", {"N", "Add", "Mul", "Roots", "Non-root", "32f single add", "32f double add", "Widen", "Narrow", "Plan", "Form", "Sums in double"}, "Hartley"}};
  const std::map<int, TableRow> want = reference();
  for (const RealTable& t : tables) {
    const Table table = Table::read(kPlans / t.file, t.columns);
    EXPECT_EQ(table.rows().size(), want.size());
    for (const TableRow& row : table.rows()) {
      const TableRow& expected = want.at(row.integer("N"));
      const Plan plan = plan_in(row, "Plan", row.integer("N"), blocks);
      const bool rader = plan.kind == Plan::Kind::Rader;
      std::vector<int> order = stages(rader ? plan.first() : plan);
      if (row.has("Form") && row["Form"] == "transposed") {
        order = stages(rader ? plan.second().first() : plan);
        std::reverse(order.begin(), order.end());
        std::vector<int> other = order;
        if (rader) order.insert(order.begin(), 2), other.push_back(2);
        if (dotted(other) == expected[t.reference]) order = other;
      }
      EXPECT_EQ(dotted(order), expected[t.reference]) << t.file << ", N = " << row["N"];
      if (!row.has("Numbering")) continue;
      EXPECT_EQ(rader ? dotted(stages(plan.second().first())) : "-", expected["second"]) << "second transform, N = " << row["N"];
    }
  }
}

TEST(Plans, ComplexRowsAreThoseOfTheReference) {
  const std::map<int, TableRow> want = reference();
  const Table table = Table::read(kPlans / "complex_plans.tsv", {"N", "precision", "plan", "runs", "flow", "forms", "A", "M", "built A", "built M", "reason"});
  EXPECT_EQ(table.rows().size(), 2 * want.size());
  for (const TableRow& row : table.rows()) {
    const std::string& expected = want.at(row.integer("N"))["complex " + row["precision"]];
    if (expected == "-") continue;
    EXPECT_EQ(row["plan"], expected) << "N = " << row["N"] << " in " << row["precision"] << " bits";
  }
}

}  // namespace
