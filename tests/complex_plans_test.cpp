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
    plans_.write(folder_ / "complex_plans.tsv");
    blocks_.write(folder_ / "complex_blocks.tsv");
    const std::string in = folder_.path().string();
    fs::create_directory(folder_ / "out");
    return folder_.run(std::string(XFM_GEN_DFT) + " " + in + " " + in + "/out/report.tsv " + dispatcher_ + " " + in +
                       "/out/unit.cpp");
  }

  void expect_refused(const std::string& what, const std::string& where, const std::string& why) {
    EXPECT_EQ(generate(), 1) << what << ": " << folder_.said;
    EXPECT_NE(folder_.said.find(where), std::string::npos) << what << ": expected " << where << ", got " << folder_.said;
    EXPECT_NE(folder_.said.find(why), std::string::npos) << what << ": expected " << why << ", got " << folder_.said;
    EXPECT_TRUE(fs::is_empty(folder_ / "out")) << what;
  }

  void reset() { plans_ = Lines(fs::path(XFM_PLANS) / "complex_plans.tsv"), blocks_ = Lines(fs::path(XFM_PLANS) / "complex_blocks.tsv"); }

  xfm::test::PlansFolder folder_{"functions.tsv"};
  Lines plans_{fs::path(XFM_PLANS) / "complex_plans.tsv"}, blocks_{fs::path(XFM_PLANS) / "complex_blocks.tsv"};
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
      {"64", kLength, "65", "no function has this length"},
      {"6", kPrecision, "16", "no function has this length and precision"},
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
      {"6", kPlan, "6", "no block has the length 6"},
      {"20", kPlan, "4 pf R5b", "no block is named 'R5b'"},
      {"20", kPlan, "4 pf apart(5)", "cannot have the block apart(5)"},
      {"12", kPlan, "halves(3 ct 2; 4 pf 3)", "cannot have the block halves(3 ct 2; 4 pf 3)"},
      {"8", kPlan, "8", "no block has the length 8"},
      {"47", kPlan, "2 pf chirp(47; 4 ct 4 ct 4 ct 2)", "has length 94"},
      {"15", kPlan, "rader(2 pf 7)", "Rader's method at 15, which is no prime"},
      {"47", kPlan, "chirp(47; 8)", "the convolution is too short"},
      {"9", kPlan, "rader", "expected '('"},
      {"3", kRuns, "2 pf", "expected a block"},
      {"12", kRuns, "(2 ct 2) pf 3", "plan and runs have different blocks"},
      {"6", kRuns, "3 pf 2", "plan and runs have different blocks"},
      {"6", kFlow, "both", "unknown flow 'both'"},
      {"6", kFlow, "half-blocks", "has nothing to change"},
      {"7", kFlow, "half", "has nothing to change"},
      {"6", kForms, "quick", "no working form 'quick'"},
      {"6", kForms, "interleaved by 1", "no working form 'interleaved by 1' in this precision"},
      {"6", kForms, "split, scalar", "forms of different precision of the products"},
      {"6", kForms, "scalar", "xfmgDFTFwd_CToC_6_32fc has a gate that its form has not"},
      {"15", kA, "157", "takes 156 additions and 68 multiplications, the row has 157 and 68"},
      {"15", kM, "many", "not an integer"},
      {"15", kBuiltA, "156", "needs its reason"},  // a departure is told in full
  };
  for (const Case& c : cases) {
    reset();
    const size_t line = plans_.find({c.length, "32"});
    plans_[line][c.column] = c.value;
    expect_refused(std::string("N = ") + c.length + " with " + c.value, "complex_plans.tsv:" + std::to_string(line + 1) + ": ", c.why);
  }
  reset();
  plans_[plans_.find({"6", "32"})][kPlan] = std::string(200000, '(') + "2 pf 3";
  expect_refused("a deep plan", "complex_plans.tsv:", "too many parentheses");
}

TEST_F(ComplexPlans, BadBlocksAreRefusedWithTheirLine) {
  enum Column { kName, kPlan, kPrecision };
  struct Case {
    Column column;
    const char *value, *why;
  };
  const Case cases[] = {{kName, "17", "'17' is no name of a block of length 13"},
                        {kName, "R17", "'R17' is no name of a block of length 13"},
                        {kName, "R13B", "'R13B' is no name of a block of length 13"},
                        {kName, "R11a", "'R11a' is no name of a block"},
                        {kName, "R13b", "a second block of the name R13b"},
                        {kPlan, "rader(4 pf 3; 5)", "the parts do not fit together"},
                        {kPlan, "rader(2 pf 7; 2 pf 7)", "Rader's method at 15, which is no prime"},
                        {kPlan, "rader(6 ct 2; 4 pf 3)", "no block has the length 6"},
                        {kPlan, "rader(R3 pf 4; 4 pf 3)", "no block is named 'R3'"},
                        {kPrecision, "p", "not an integer"},
                        {kPrecision, "64", "that has a block in this precision"}};
  for (const Case& c : cases) {
    reset();
    size_t line = blocks_.find({"R13a"});
    blocks_[line][c.column] = c.value;
    if (std::string(c.value) == "R13b" || std::string(c.value) == "64") line = blocks_.find({"R13b", "rader(3 pf 4; halves(3 ct 2; 4 pf 3))"});
    expect_refused(c.value, "complex_blocks.tsv:" + std::to_string(line + 1) + ": ", c.why);
  }
}

TEST_F(ComplexPlans, RowsAreCompleteAndSingle) {
  const size_t line = plans_.find({"30", "32"});
  plans_.repeat(line);
  expect_refused("a row twice", "complex_plans.tsv:" + std::to_string(line + 2) + ": ", "second row");
  reset();
  plans_.erase(line);
  expect_refused("a row less", "complex_plans.tsv: ", "no row for length 30, precision 32");
  reset();
  plans_[line].resize(3);
  expect_refused("a row cut short", "complex_plans.tsv:" + std::to_string(line + 1) + ": ", "3 cells");
  reset();
  blocks_[blocks_.find({"R13a"})][2] = "-";  // 13 points by their definition then
  expect_refused("a prime without its block", "complex_plans.tsv:", "by '13 pf 2' takes");
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
    expect_refused(c.why, "complex_plans.tsv:" + std::to_string(line + 1) + ": ", c.why);
  }
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
  plans_[line][6] = "921";
  EXPECT_EQ(generate(), 1);
  std::ifstream in(folder_ / "out/unit.cpp");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "older");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_ / "out"), {}), 1);
}

}  // namespace
