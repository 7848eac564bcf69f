// The flows of the real transforms before and behind the compiler: exact values of the graphs, the precision rule by
// value, and the plan tables as a gate.
#include <array>
#include <set>

#include "generator/check.h"
#include "generator/passes.h"
#include "generator/table.h"
#include "rdft/lower.h"
#include "rdft/rows.h"
#include "tests/plans_folder.h"
#include "tests/real_support.h"

namespace real_test {
namespace {

namespace rdft = xfm::rdft;
using xfm::Real;

const std::vector<rdft::Row>& rows(rdft::Family family) {
  static const std::array<std::vector<rdft::Row>, 3> all = {rdft::read_rows(XFM_PLANS, rdft::Family::Forward),
                                                            rdft::read_rows(XFM_PLANS, rdft::Family::Inverse),
                                                            rdft::read_rows(XFM_PLANS, rdft::Family::Hartley)};
  return all[static_cast<int>(family)];
}

// The matrix of a transform by its definition, in 113 bits: what input `i` gives to output `j`.
Real matrix_entry(rdft::Family family, int n, int i, int j) {
  if (family == rdft::Family::Hartley) return xfm::cos_turn(i * j, n) + xfm::sin_turn(i * j, n);
  const bool forward = family == rdft::Family::Forward;
  const Cell cell = cell_at(Format::Pack, n, forward ? j : i);
  const int sample = forward ? i : j;
  const Real value = cell.imaginary ? -xfm::sin_turn(cell.bin * sample, n) : xfm::cos_turn(cell.bin * sample, n);
  return forward || cell.bin == 0 || 2 * cell.bin == n ? value : 2 * value;
}

TEST(RealFlows, GraphsAreTheTransforms) {
  for (const auto family : {rdft::Family::Forward, rdft::Family::Inverse, rdft::Family::Hartley})
    for (const rdft::Row& row : rows(family)) {
      const xfm::Graph& g = row.flow.graph;
      std::vector<Real> input;
      for (double v : random_values<double>(row.length, row.length)) input.push_back(v);
      std::vector<Real> value(g.size());
      for (int i : xfm::live_nodes(g, row.flow.outputs)) {
        if (g[i].kind == xfm::Node::Kind::Input) {
          const int cell = g[i].cells[0];
          value[i] = row.flow.doubled[cell] ? 2 * input[cell] : input[cell];
        }
        for (const xfm::Term& t : g[i].terms)
          value[i] += t.ref.turn == 0 ? t.coef.lane(0) * value[t.ref.node] : -t.coef.lane(0) * value[t.ref.node];
      }
      for (int j = 0; j < row.length; ++j) {
        Real want = 0;
        for (int i = 0; i < row.length; ++i) want += matrix_entry(family, row.length, i, j) * input[i];
        const xfm::Ref r = row.flow.outputs[j];
        const Real error = xfm::magnitude((r.turn == 0 ? value[r.node] : -value[r.node]) - want);
        ASSERT_LT(static_cast<double>(error), 1e-29) << rdft::table_name(family) << " N = " << row.length << " output " << j;
      }
    }
}

// What enters a double expression is widened once, the scale with it where an output ends in one; nothing is multiplied in
// single precision but by the scale.
TEST(RealFlows, WideningAtThreeAndFivePoints) {
  for (const int n : {3, 5}) {
    const rdft::Flow& flow = rows(rdft::Family::Forward).at(n - 2).flow;
    const xfm::Program program = rdft::lower(flow, rdft::Layout::Samples, rdft::Layout::Pack, rdft::Precision::Single);
    const auto inst = [&](int i) { return program.insts().at(i); };
    std::multiset<std::string> widened;
    for (const xfm::Inst& i : program.insts()) {
      const auto operand = [&](int a) { return inst(a).op == xfm::Op::Load ? "x" + std::to_string(inst(a).cell) : std::string("?"); };
      if (i.op == xfm::Op::Mul && i.type == xfm::Type::F32) {
        EXPECT_EQ(inst(i.a).op, xfm::Op::Scale) << n;
      }
      if (i.op != xfm::Op::Widen) continue;
      const xfm::Inst& from = inst(i.a);
      if (from.op == xfm::Op::Load) widened.insert(operand(i.a));
      else if (from.op == xfm::Op::Scale) widened.insert("scale");
      else widened.insert(operand(from.a) + (from.op == xfm::Op::Add ? "+" : "-") + operand(from.b));
    }
    const std::multiset<std::string> three = {"x0", "x1+x2", "x1-x2", "scale"},
                                     five = {"x0", "x1+x4", "x2+x3", "x1-x4", "x2-x3", "scale"};
    EXPECT_EQ(widened, n == 3 ? three : five);
  }
}

// The precision rule spelt out for small kernels.
TEST(RealFlows, PrecisionRuleByHand) {
  constexpr double kSin3 = 0.8660254037844386, kCos5 = 0.30901699437494745, kCos10 = 0.8090169943749475,
                   kSin5 = 0.9510565162951535, kSin10 = 0.5877852522924731, kHalfRoot = 0.7071067811865476;
  for (unsigned seed = 0; seed < 200; ++seed) {
    const std::vector<float> x = random_values<float>(8, seed);
    {
      const float s = 0.33333334f, sum = x[1] + x[2], diff = x[1] - x[2];
      const double wide = s, re = double(x[0]) - 0.5 * double(sum), im = kSin3 * double(diff);
      const std::vector<float> want = {s * (x[0] + sum), float(wide * re), float(0.0 - wide * im)};
      ASSERT_TRUE(same_bits(run(kernel<float>(kFamilies[1], 3), {x[0], x[1], x[2]}, xfmScaleFwdByN), want));
    }
    {
      const float s = 0.2f, u1 = x[1] + x[4], u2 = x[2] + x[3], v1 = x[1] - x[4], v2 = x[2] - x[3];
      const double wide = s;
      const double re1 = double(x[0]) + kCos5 * double(u1) - kCos10 * double(u2);
      const double re2 = double(x[0]) - kCos10 * double(u1) + kCos5 * double(u2);
      const double im1 = kSin5 * double(v1) + kSin10 * double(v2), im2 = kSin5 * double(v2) - kSin10 * double(v1);
      const std::vector<float> want = {s * ((u1 + u2) + x[0]), float(wide * re1), float(0.0 - wide * im1), float(wide * re2),
                                       float(wide * im2)};
      const std::vector<float> got = run(kernel<float>(kFamilies[1], 5), {x.begin(), x.begin() + 5}, xfmScaleFwdByN);
      ASSERT_TRUE(same_bits(got, want));
    }
    {
      const float t1 = float(kHalfRoot * double(x[1] - x[5])), t3 = float(kHalfRoot * double(x[3] - x[7]));
      const float d0 = x[0] - x[4], d2 = x[2] - x[6];
      const std::vector<float> got = run(kernel<float>(kFamilies[0], 8), x, xfmScaleNone);
      ASSERT_EQ(got[2], d0 + (t1 - t3));
      ASSERT_EQ(got[6], d0 - (t1 - t3));
      ASSERT_EQ(got[3], -(d2 + (t1 + t3)));
      ASSERT_EQ(got[7], d2 - (t1 + t3));
    }
    {
      const float s = 0.33333334f, u = 2.0f * x[1], even = float(double(x[0]) - 0.5 * double(u));
      const float odd = float(2 * kSin3 * double(x[2]));  // the doubling of the imaginary part is in the constant
      const std::vector<float> want = {s * (u + x[0]), s * (even - odd), s * (even + odd)};
      ASSERT_TRUE(same_bits(run(kernel<float>(kFamilies[4], 3), {x[0], x[1], x[2]}, xfmScaleInvByN), want));
    }
    {
      const float s = 0.2f, r1 = 2.0f * x[1], i1 = 2.0f * x[2], r2 = 2.0f * x[3], i2 = 2.0f * x[4];
      const float even1 = float(double(x[0]) + kCos5 * double(r1) - kCos10 * double(r2));
      const float even2 = float(double(x[0]) - kCos10 * double(r1) + kCos5 * double(r2));
      const float odd1 = float(kSin5 * double(i1) + kSin10 * double(i2)), odd2 = float(kSin10 * double(i1) - kSin5 * double(i2));
      const std::vector<float> want = {s * ((r1 + r2) + x[0]), s * (even1 - odd1), s * (even2 - odd2), s * (even2 + odd2),
                                       s * (even1 + odd1)};
      const std::vector<float> got = run(kernel<float>(kFamilies[4], 5), {x.begin(), x.begin() + 5}, xfmScaleInvByN);
      ASSERT_TRUE(same_bits(got, want));
    }
    {
      const float s = 0.2f, u1 = x[1] + x[4], u2 = x[2] + x[3], v1 = x[1] - x[4], v2 = x[2] - x[3];
      const float even1 = float(double(x[0]) + kCos5 * double(u1) - kCos10 * double(u2));
      const float even2 = float(double(x[0]) - kCos10 * double(u1) + kCos5 * double(u2));
      const float odd1 = float(kSin5 * double(v1) + kSin10 * double(v2)), odd2 = float(kSin10 * double(v1) - kSin5 * double(v2));
      const std::vector<float> want = {s * ((u1 + u2) + x[0]), s * (even1 + odd1), s * (even2 + odd2), s * (even2 - odd2),
                                       s * (even1 - odd1)};
      const std::vector<float> got = run(kernel<float>(kFamilies[6], 5), {x.begin(), x.begin() + 5}, xfmScaleInvByN);
      ASSERT_TRUE(same_bits(got, want));
    }
  }
}

// ---- layouts -------------------------------------------------------------------------------------------------------

TEST(RealFlows, LayoutMapsPlaceEveryBin) {
  constexpr std::pair<rdft::Layout, Format> kPairs[] = {
      {rdft::Layout::Ccs, Format::Ccs}, {rdft::Layout::Pack, Format::Pack}, {rdft::Layout::Perm, Format::Perm}};
  for (const auto& [layout, format] : kPairs)
    for (const rdft::Row& row : rows(rdft::Family::Forward)) {
      const int n = row.length;
      std::vector<int> written(length_of(format, n));
      for (int place = 0; place < n; ++place) {
        const int at = rdft::position(layout, n, place);
        ++written.at(at);
        const Cell in_list = cell_at(Format::Pack, n, place), in_array = cell_at(format, n, at);
        ASSERT_EQ(in_list.bin, in_array.bin) << n;
        ASSERT_EQ(in_list.imaginary, in_array.imaginary) << n;
      }
      for (int at : rdft::zero_positions(layout, n)) ++written.at(at);
      for (int j = 0; j < length_of(format, n); ++j) ASSERT_EQ(written[j], 1) << n << " position " << j;
    }
  // Eight points, from left to right: Pack R0 R1 I1 R2 I2 R3 I3 R4; Perm R0 R4 R1 I1 R2 I2 R3 I3.
  const std::vector<int> perm8 = {0, 2, 3, 4, 5, 6, 7, 1}, ccs8 = {0, 2, 3, 4, 5, 6, 7, 8};
  for (int place = 0; place < 8; ++place) {
    EXPECT_EQ(rdft::position(rdft::Layout::Perm, 8, place), perm8[place]);
    EXPECT_EQ(rdft::position(rdft::Layout::Ccs, 8, place), ccs8[place]);
  }
}

// ---- the tables as a gate ------------------------------------------------------------------------------------------

class RealPlans : public testing::Test {
 protected:
  using Lines = xfm::test::Lines;

  static Lines table(const std::string& file) { return Lines(std::filesystem::path(XFM_PLANS) / file); }
  static Lines table(rdft::Family family) { return table(rdft::table_name(family)); }
  // What is said of the table with `text` in the named column of the row that begins with `first`: it must name the line.
  std::string refusal(const std::string& file, const std::string& first, const std::string& column, const std::string& text,
                      rdft::Family family) const {
    Lines lines = table(file);
    const std::string key = file == "real_blocks.tsv" ? "Name" : "N";
    const std::vector<std::string>& header = lines[lines.find({key})];
    const size_t at = std::find(header.begin(), header.end(), column) - header.begin(), row = lines.find({first});
    lines[row].at(at) = text;
    lines.write(folder_ / file);
    const std::string said = reason(family), where = file + ":" + std::to_string(row + 1) + ": ";
    EXPECT_NE(said.find(where), std::string::npos) << said << "\nlacks " << where;
    table(file).write(folder_ / file);
    return said;
  }
  std::string refusal(rdft::Family family, const std::string& first, const std::string& column, const std::string& text) const {
    return refusal(rdft::table_name(family), first, column, text, family);
  }
  std::string reason(rdft::Family family) const {
    try {
      rdft::read_rows(folder_.path(), family);
    } catch (const xfm::InputError& error) {
      return error.what();
    }
    return "accepted";
  }
  static void expect_part(const std::string& message, const std::string& part) {
    EXPECT_NE(message.find(part), std::string::npos) << message << "\nlacks " << part;
  }

  xfm::test::PlansFolder folder_{"real_blocks.tsv", "real_forward_plans.tsv", "real_inverse_plans.tsv", "hartley_plans.tsv", "functions.tsv"};
};

// Every count is held: a column that is left out of the comparison would let its wrong cell pass.
TEST_F(RealPlans, AWrongCountInAnyColumnIsRefused) {
  for (const auto family : {rdft::Family::Forward, rdft::Family::Inverse, rdft::Family::Hartley}) {
    Lines lines = table(family);
    int counts = 0;
    for (const std::string& column : lines[lines.find({"N"})]) {
      if (column == "N") continue;
      if (column == "Plan") break;
      expect_part(refusal(family, "13", column, "999"), "N = 13; column " + column + ": the row has 999");
      ++counts;
    }
    EXPECT_GE(counts, 8);
  }
}

// A plan that is a transform all right but not the one the row counts.
TEST_F(RealPlans, AnotherPlanOrNumberingIsRefused) {
  using enum rdft::Family;
  expect_part(refusal(Forward, "6", "Numbering", "-"), "column Add: the row has 15");
  expect_part(refusal(Forward, "13", "Numbering", "2,1"), "column Add: the row has 80");
  expect_part(refusal(Forward, "19", "Sums in double", "-"), "column 32f double add: the row has 59, the flow 57");
  expect_part(refusal(Hartley, "18", "Form", "forward"), "column Mul: the row has 36, the flow 40");
  expect_part(refusal(Hartley, "32", "Plan", "H32"), "column Mul: the row has 42, the flow 44");
  expect_part(refusal(Hartley, "45", "Plan", "5 pf (3 ct 3)"), "column Mul: the row has 162");
  expect_part(refusal(Inverse, "11", "Plan", "11"), "column Roots: the row has 5, the flow 11");
  expect_part(refusal(Inverse, "48", "Plan", "3 pf H16"), "column Mul: the row has 72");
}

TEST_F(RealPlans, BadInputIsNamedWithItsLine) {
  struct Case {
    const char *column, *text, *reason;
  };
  const Case cases[] = {
      {"N", "8", "N: expected 15"},
      {"Plan", "3 pf 7", "has length 21"},
      {"Plan", "15", "no block has the length 15"},
      {"Plan", "5 pf R3z", "no block is named 'R3z'"},
      {"Numbering", "1,1", "takes element,row,conjugate"},
      {"Numbering", "3,1,0", "not coprime"},
      {"Numbering", "1,,0", "is not a number"},
      {"Sums in double", "1", "no sum of 1 additions can stand in double"},
      {"Sums in double", "one", "'one' is not a number"},
      {"Sums in double", "1 twice", "unknown word"},
  };
  for (const Case& c : cases) expect_part(refusal(rdft::Family::Forward, "15", c.column, c.text), c.reason);
  Lines lines = table(rdft::Family::Forward);
  lines.erase(lines.find({"64"}));
  lines.write(folder_ / rdft::table_name(rdft::Family::Forward));
  expect_part(reason(rdft::Family::Forward), "the table ends before N = 64");
}

// A bad block is named where it stands, not where a plan uses it.
TEST_F(RealPlans, ABadBlockIsNamedInItsOwnTable) {
  const std::pair<const char*, const char*> cases[] = {{"rader(3 pf 5; halves(3 pf 2; 4 pf 3))", "at 16, which is no prime"},
                                                       {"rader(3 pf 4; halves(3 pf 2; 2 pf 5))", "do not fit together"},
                                                       {"rader(3 pf 4; halves(6; 4 pf 3))", "no block has the length 6"},
                                                       {"rader(3 pf 4; R12)", "no block is named 'R12'"},
                                                       {"rader(2 pf 11; R11a pf 2)", "'R13a' is no name of a block of length 23"},
                                                       {"R13b", "no block is named 'R13b'"}};
  for (const auto& [plan, reason] : cases)
    expect_part(refusal("real_blocks.tsv", "R13a", "Plan", plan, rdft::Family::Forward), reason);
}

TEST_F(RealPlans, TheProgramWritesNothingOnBadInput) {
  const std::string output = folder_ / "out/unit.cpp", report = folder_ / "out/unit.tsv", plans = folder_.path().string();
  std::filesystem::create_directory(folder_ / "out");
  const auto generate = [&](const std::string& unit) {
    return folder_.run(std::string(XFM_GEN_RDFT) + " " + unit + " " + plans + " " + report + " base " + output);
  };
  EXPECT_EQ(generate("pgenhartley16f"), 1);
  expect_part(folder_.said, "no unit is named pgenhartley16f");
  Lines lines = table(rdft::Family::Hartley);
  lines[lines.find({"63"})][2] = "303";
  lines.write(folder_ / "hartley_plans.tsv");
  EXPECT_EQ(generate("pgenhartley32f"), 1);
  expect_part(folder_.said, "N = 63; column Mul: the row has 303, the flow 302");
  EXPECT_TRUE(std::filesystem::is_empty(folder_ / "out"));
  EXPECT_EQ(generate("pgenrdftfwdccs64f"), 0) << folder_.said;
  EXPECT_TRUE(std::filesystem::exists(output));
}

}  // namespace
}  // namespace real_test
