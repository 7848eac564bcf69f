// Bad rows in the plan tables of the complex transforms, given to the generator as it is run by the build: it names the file
// and the line, says why, and leaves nothing behind.
#include <gtest/gtest.h>

#include "tests/plans_folder.h"

namespace {

namespace fs = std::filesystem;
using xfm::test::Lines;

class ComplexPlans : public testing::Test {
 protected:
  // Exit code; what was said is in `folder_.said`.
  int generate() {
    plans_.write(folder_ / "plans.tsv");
    blocks_.write(folder_ / "blocks.tsv");
    const std::string in = folder_.path().string() + "/";
    fs::create_directory(folder_ / "out");
    return folder_.run(std::string("timeout 100 ") + XFM_GEN_DFT + " " + XFM_FUNCTIONS + " " + in + "plans.tsv " + in + "blocks.tsv " +
                       in + "out/report.tsv " + dispatcher_ + " " + in + "out/unit.cpp");
  }

  void expect_refused(const std::string& what, const std::string& where, const std::string& why) {
    EXPECT_EQ(generate(), 1) << what << ": " << folder_.said;
    EXPECT_NE(folder_.said.find(where), std::string::npos) << what << ": expected " << where << ", got " << folder_.said;
    EXPECT_NE(folder_.said.find(why), std::string::npos) << what << ": expected " << why << ", got " << folder_.said;
    EXPECT_TRUE(fs::is_empty(folder_ / "out")) << what;
  }

  void reset() { plans_ = Lines(fs::path(XFM_PLANS) / "complex_plans.tsv"), blocks_ = Lines(fs::path(XFM_PLANS) / "lane_blocks.tsv"); }

  xfm::test::PlansFolder folder_;
  Lines plans_{fs::path(XFM_PLANS) / "complex_plans.tsv"}, blocks_{fs::path(XFM_PLANS) / "lane_blocks.tsv"};
  std::string dispatcher_ = "xfmgDFTFwd_CToC_32fc";
};

TEST_F(ComplexPlans, TheTablesThemselvesAreAccepted) {
  EXPECT_EQ(generate(), 0) << folder_.said;
  EXPECT_TRUE(fs::exists(folder_ / "out/unit.cpp") && fs::exists(folder_ / "out/report.tsv"));
}

TEST_F(ComplexPlans, BadCellsAreRefusedWithTheirLine) {
  enum Column { kLength, kPrecision, kPlan, kRuns, kFlow, kForms, kA, kM, kBuiltA };
  struct Case {
    const char* length;
    Column column;
    const char *value, *why;
  };
  const Case cases[] = {
      {"6", kLength, "six", "not an integer"},
      {"64", kLength, "65", "out of range"},
      {"6", kPrecision, "16", "precision is 32 or 64"},
      {"6", kPlan, "2 pf 5", "has length 10"},
      {"8", kPlan, "4 pf 2", "coprime"},
      {"64", kPlan, "(4 ct 4 ct 4", "expected ')'"},
      {"64", kPlan, "(4 ct 4)) ct 4", "text behind the plan"},
      {"6", kPlan, "2 xx 3", "text behind the plan"},
      {"6", kPlan, "", "expected a block"},
      {"6", kPlan, "0 pf 6", "no length of a block in '0'"},
      {"6", kPlan, "99999999999 pf 6", "no length of a block"},
      {"6", kPlan, "2 pf 3p", "no block is named '3p'"},
      {"6", kPlan, "rows(6; 3)", "do not fit together"},
      {"6", kPlan, "6", "has the block 6"},
      {"20", kPlan, "4 pf R5", "no block is named 'R5'"},  // a name of the real-lane plans
      {"9", kPlan, "real-lane", "9 is not an odd prime"},
      {"9", kPlan, "direct", "9 is not an odd prime"},
      {"3", kPlan, "real-lane", "no table says how it is made"},
      {"9", kPlan, "rader", "expected a block"},  // its inner plan is missing
      {"47", kRuns, "8", "at least twice the length"},
      {"3", kRuns, "2 pf", "'direct' runs no plan"},
      {"12", kRuns, "(2 ct 2) pf 3", "plan and runs have different blocks"},
      {"6", kFlow, "both", "unknown flow 'both'"},
      {"6", kFlow, "half-blocks", "has nothing to change"},
      {"7", kFlow, "half", "has nothing to change"},
      {"15", kForms, "7:lane/direct", "a form for 7, which is no block of '5 pf 3'"},
      {"15", kForms, "5:direct/direct 5:direct/direct", "two forms for 5"},
      {"10", kForms, "5", "forms are written"},
      {"10", kForms, "x:lane/direct", "forms are written"},
      {"10", kForms, "5:lane/quick", "unknown form of a block 'quick'"},
      {"10", kForms, "5:rader/rader", "no table says how it is made"},
      {"6", kForms, "3:lane/lane", "no table says how it is made"},
      {"15", kA, "157", "takes 156 additions and 68 multiplications, the row has 157 and 68"},
      {"15", kM, "many", "not an integer"},
      {"15", kBuiltA, "156", "needs its reason"},  // a departure is told in full
  };
  for (const Case& c : cases) {
    reset();
    const size_t line = plans_.find({c.length, "32"});
    plans_[line][c.column] = c.value;
    expect_refused(std::string("N = ") + c.length + " with " + c.value, "plans.tsv:" + std::to_string(line + 1) + ": ", c.why);
  }
  reset();
  plans_[plans_.find({"6", "32"})][kPlan] = std::string(200000, '(') + "2 pf 3";
  expect_refused("a deep plan", "plans.tsv:", "too many parentheses");
}

TEST_F(ComplexPlans, BadBlocksAreRefusedWithTheirLine) {
  enum Column { kPrime = 2, kFirst, kSecond };
  struct Case {
    Column column;
    const char *value, *why;
  };
  const Case cases[] = {{kPrime, "p", "not an integer"},
                        {kPrime, "15", "15 is not an odd prime"},
                        {kPrime, "17", "has length 12"},
                        {kFirst, "6 ct 2", "no block has the length 6"},
                        {kFirst, "5", "has length 5"},
                        {kSecond, "R3 pf 4", "no block is named 'R3'"},
                        {kSecond, "R", "expected a block"}};
  for (const Case& c : cases) {
    reset();
    const size_t line = blocks_.find({"-", "32", "13"});
    blocks_[line][c.column] = c.value;
    expect_refused(c.value, "blocks.tsv:" + std::to_string(line + 1) + ": ", c.why);
  }
  const std::vector<std::vector<const char*>> named = {
      {"R5", "-", "7", "2 pf 3", "2 pf 3", "'R5' is no name of a block of length 7"}, {"17", "-", "17", "4 ct 4", "4 ct 4", "'17' is no name of a block of length 17"},
      {"R17", "64", "17", "4 ct 4", "4 ct 4", "a block with a name -"}, {"-", "31", "17", "4 ct 4", "4 ct 4", "precision is 32 or 64"}};
  for (const auto& cells : named) {
    reset();
    const size_t line = blocks_.find({"-", "32", "13"});
    std::copy(cells.begin(), cells.end() - 1, blocks_[line].begin());
    expect_refused(cells.back(), "blocks.tsv:" + std::to_string(line + 1) + ": ", cells.back());
  }
}

TEST_F(ComplexPlans, RowsAreCompleteAndSingle) {
  const size_t line = plans_.find({"30", "32"});
  plans_.repeat(line);
  expect_refused("a row twice", "plans.tsv:" + std::to_string(line + 2) + ": ", "second row");
  reset();
  plans_.erase(line);
  expect_refused("a row less", "plans.tsv: ", "no row for length 30, precision 32");
  reset();
  plans_[line].resize(3);
  expect_refused("a row cut short", "plans.tsv:" + std::to_string(line + 1) + ": ", "3 cells");
  reset();
  const size_t block = blocks_.find({"-", "32", "13"});
  blocks_.repeat(block);
  expect_refused("a block twice", "blocks.tsv:" + std::to_string(block + 2) + ": ", "second block");
  reset();
  blocks_.erase(block);
  expect_refused("a block less", "plans.tsv:", "a block of length 13, and no table says how it is made");
}

// A departure is stated in full, with its reason, and goes up by at most a hundredth.
TEST_F(ComplexPlans, DeparturesFromTheReference) {
  struct Case {
    const char *a, *m, *built_a, *built_m, *reason, *why;
  };
  const Case cases[] = {{"160", "68", "156", "68", "-", "needs its reason"},
                        {"154", "68", "156", "68", "as if it were so", "exceed the reference by more than a hundredth"},
                        {"156", "67", "156", "68", "as if it were so", "exceed the reference by more than a hundredth"},
                        {"160", "68", "157", "68", "as if it were so", "takes 156 additions and 68 multiplications"}};
  const size_t line = plans_.find({"15", "32"});
  for (const Case& c : cases) {
    reset();
    const std::vector<std::string> cells{c.a, c.m, c.built_a, c.built_m, c.reason};
    std::copy(cells.begin(), cells.end(), plans_[line].end() - 5);
    expect_refused(c.why, "plans.tsv:" + std::to_string(line + 1) + ": ", c.why);
  }
}

// Rader's way through a composite length would look for a root that is not there.
TEST_F(ComplexPlans, APrimesAlgorithmAtACompositeLength) {
  const size_t line = plans_.find({"15", "32"});
  plans_[line][2] = "rader", plans_[line][3] = "2 pf 7";
  expect_refused("rader at 15", "plans.tsv:" + std::to_string(line + 1) + ": ", "15 is not an odd prime");
}

TEST_F(ComplexPlans, OnlyDispatchersOfComplexKernels) {
  for (const char* name : {"xfmgDFTFwd_CToC_16fc", "xfmgHartley_32f"}) {
    dispatcher_ = name;
    expect_refused(name, name, "no complex kernels");
  }
}

TEST_F(ComplexPlans, AnOlderUnitStaysWhatItWas) {
  fs::create_directory(folder_ / "out");
  std::ofstream(folder_ / "out/unit.cpp") << "older";
  const size_t line = plans_.find({"64", "32"});
  plans_[line][6] = "265";
  EXPECT_EQ(generate(), 1);
  std::ifstream in(folder_ / "out/unit.cpp");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "older");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "out"), {}), 1);
}

}  // namespace
