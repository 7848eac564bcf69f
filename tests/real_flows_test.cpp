// The flows of the real transforms before and behind the compiler: exact values of the graphs, the precision rule by
// value, and the plan tables as a gate.
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "generator/check.h"
#include "generator/passes.h"
#include "generator/table.h"
#include "rdft/layout.h"
#include "rdft/rows.h"
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

// Pack is the order in which flows list a spectrum.
const Family& packed(rdft::Family family) {
  return kFamilies[family == rdft::Family::Forward ? 1 : family == rdft::Family::Inverse ? 4 : 6];
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

// The precision rule, read off the graph: a value is a single or, while its expression is open, a double.

template <class T>
std::vector<T> by_rule(const rdft::Row& row, const std::vector<T>& input, T scale) {
  const bool single = sizeof(T) == 4;
  const rdft::Flow& flow = row.flow;
  const std::vector<char> open_cells = rdft::open_cells(flow), folded = rdft::folded_doublings(flow);
  std::vector<T> held(flow.graph.size());
  std::vector<double> open(flow.graph.size());
  for (int i : xfm::live_nodes(flow.graph, flow.outputs)) {
    const xfm::Node& node = flow.graph[i];
    if (node.kind == xfm::Node::Kind::Input) {
      held[i] = input[node.cells[0]];
      if (flow.doubled[node.cells[0]] && !folded[node.cells[0]]) held[i] = T(2) * held[i];
      open[i] = held[i];
      continue;
    }
    std::vector<xfm::Term> terms = node.terms;
    const auto first = std::find_if(terms.begin(), terms.end(), [](const xfm::Term& t) { return t.ref.turn == 0; });
    std::rotate(terms.begin(), first, first + 1);
    const bool wide = flow.wide[i] || node.has_products();
    T narrow_sum = 0;
    double wide_sum = 0;
    for (size_t k = 0; k < terms.size(); ++k) {
      const xfm::Term& t = terms[k];
      const bool doubled = flow.graph[t.ref.node].kind == xfm::Node::Kind::Input && folded[flow.graph[t.ref.node].cells[0]];
      const double factor = static_cast<double>(doubled ? 2 * t.coef.lane(0) : t.coef.lane(0));
      const double product = t.coef.unit() ? open[t.ref.node] : factor * open[t.ref.node];
      const T plain = held[t.ref.node];
      wide_sum = k == 0 ? product : t.ref.turn == 0 ? wide_sum + product : wide_sum - product;
      narrow_sum = k == 0 ? plain : t.ref.turn == 0 ? narrow_sum + plain : narrow_sum - plain;
    }
    if (wide) {
      held[i] = static_cast<T>(wide_sum);
      open[i] = flow.wide[i] ? wide_sum : static_cast<double>(held[i]);
      if (open_cells[i]) open[i] = wide_sum;
    } else {
      held[i] = narrow_sum;
      open[i] = narrow_sum;
    }
  }
  std::vector<T> out;
  for (xfm::Ref r : flow.outputs) {
    const bool negated = r.turn == 2;
    if (single && open_cells[r.node]) {
      const double scaled = static_cast<double>(scale) * open[r.node];
      out.push_back(static_cast<T>(negated ? 0.0 - scaled : scaled));
    } else {
      const T scaled = scale * held[r.node];
      out.push_back(negated ? T(0) - scaled : scaled);
    }
  }
  return out;
}

TEST(RealFlows, BodiesRoundWhereTheRuleSays) {
  const auto check = [](auto one) {
    using T = decltype(one);
    for (const auto family : {rdft::Family::Forward, rdft::Family::Inverse, rdft::Family::Hartley})
      for (const rdft::Row& row : rows(family)) {
        const Kernel<T> k = kernel<T>(packed(family), row.length);
        for (int flag : kFlags)
          for (unsigned seed = 0; seed < 4; ++seed) {
            const std::vector<T> src = random_values<T>(row.length, 50 * row.length + seed);
            const T scale = static_cast<T>(scale_of(k.family->kind, flag, row.length));
            ASSERT_TRUE(same_bits(run(k, src, flag), by_rule(row, src, scale))) << k.name << " flag " << flag;
          }
      }
  };
  check(float{});
  check(double{});
}

// The same rule spelt out for three small kernels.
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
    for (int n = 2; n <= 64; ++n) {
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

class PlansCopy : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::temp_directory_path() / ("xfm_real_plans_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder_);
    for (const char* file : {"real_blocks.tsv", "real_forward_plans.tsv", "real_inverse_plans.tsv", "hartley_plans.tsv", "functions.tsv"})
      std::filesystem::copy_file(std::filesystem::path(XFM_PLANS) / file, folder_ / file,
                                 std::filesystem::copy_options::overwrite_existing);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::vector<std::string> lines(const std::string& file) const {
    std::ifstream in(folder_ / file);
    std::vector<std::string> all;
    for (std::string line; std::getline(in, line);) all.push_back(line);
    return all;
  }
  void write(const std::string& file, const std::vector<std::string>& all) const {
    std::ofstream out(folder_ / file);
    for (const std::string& line : all) out << line << "\n";
  }
  // Puts `text` into the named column of the row of length n, and returns its line number.
  int set(const std::string& file, int n, const std::string& column, const std::string& text) const {
    std::vector<std::string> all = lines(file);
    const std::vector<std::string> header = xfm::split(all[0], '\t');
    std::vector<std::string> cells = xfm::split(all[n - 1], '\t');
    cells.at(std::find(header.begin(), header.end(), column) - header.begin()) = text;
    std::string line;
    for (const std::string& cell : cells) line += (line.empty() ? "" : "\t") + cell;
    all[n - 1] = line;
    write(file, all);
    return n;
  }
  std::string refusal(rdft::Family family) const {
    try {
      rdft::read_rows(folder_, family);
    } catch (const xfm::InputError& error) {
      return error.what();
    }
    return "accepted";
  }
  static void expect_parts(const std::string& message, std::initializer_list<std::string> parts) {
    for (const std::string& part : parts) EXPECT_NE(message.find(part), std::string::npos) << message << "\nlacks " << part;
  }

  std::filesystem::path folder_;
};

TEST_F(PlansCopy, AWrongCellInAnyColumnIsRefused) {
  const std::map<rdft::Family, std::vector<std::string>> columns = {
      {rdft::Family::Forward,
       {"Method", "Stage order", "Second order", "Add", "Mul", "Roots", "Non-root", "32f single add", "32f double add",
        "Widen", "Narrow, inner", "Narrow, last"}},
      {rdft::Family::Inverse,
       {"Method", "Stage order, output side", "Add", "Mul", "Doublings", "Folded doublings", "Roots", "Non-root",
        "32f single add", "32f double add", "Widen", "Narrow"}},
      {rdft::Family::Hartley,
       {"Method", "Stage order", "Add", "Mul", "Roots", "Non-root", "32f single add", "32f double add", "Widen", "Narrow"}}};
  for (const auto& [family, names] : columns) {
    const std::string file = rdft::table_name(family);
    const std::vector<std::string> intact = lines(file);
    for (const std::string& column : names)
      for (int n : {9, 13}) {
        const std::string wrong = column == "Method" ? "pairs" : column.find("order") == std::string::npos ? "999" : "2.3";
        const int line = set(file, n, column, wrong);
        expect_parts(refusal(family), {file + ":" + std::to_string(line), "N = " + std::to_string(n), "column " + column + ":"});
        write(file, intact);
      }
  }
}

// A plan that is a transform all right but not the one the row counts.
TEST_F(PlansCopy, AnotherPlanOrOrientationIsRefused) {
  const auto changed = [&](rdft::Family family, int n, const char* column, const char* text, const char* part) {
    const std::string file = rdft::table_name(family);
    const std::vector<std::string> intact = lines(file);
    set(file, n, column, text);
    expect_parts(refusal(family), {file + ":" + std::to_string(n), part});
    write(file, intact);
  };
  changed(rdft::Family::Forward, 6, "Orientation", "-", "column Add: the row has 15");
  changed(rdft::Family::Forward, 14, "Plan", "7 gt 2", "column Stage order: the row has 2.7, the flow 7.2");
  changed(rdft::Family::Forward, 19, "Sums in double", "-", "column 32f double add: the row has 59, the flow 57");
  changed(rdft::Family::Forward, 41, "Plan", "41{5 gt 8 | 5 gt 4 | (2 gt 5) tw 4}", "column Second order: the row has 2.2.5, the flow 5.2.2");
  changed(rdft::Family::Hartley, 37, "Stage order", "2.3.2.3", "column Stage order: the row has 2.3.2.3, the flow 2.2.3.3");
  changed(rdft::Family::Hartley, 53, "Two-point stage", "first", "column Stage order: the row has 2.13.2, the flow 2.2.13");
  changed(rdft::Family::Hartley, 18, "Form", "forward", "column Mul: the row has 36, the flow 40");
  changed(rdft::Family::Hartley, 32, "Plan", "32", "column Mul: the row has 42, the flow 44");
  changed(rdft::Family::Inverse, 11, "Plan", "11", "column Method: the row has Rader, the flow pairs");
}

TEST_F(PlansCopy, BadInputIsNamedWithItsLine) {
  struct Case {
    const char* column;
    const char* text;
    const char* reason;
  };
  const Case cases[] = {
      {"N", "8", "N: expected 15"},
      {"N", "x", "is not an integer"},
      {"Plan", "3 gt 5)", "unexpected text behind the plan"},
      {"Plan", "(3 gt 5", "expected ')'"},
      {"Plan", "3 by 5", "unknown link: by"},
      {"Plan", "3 gt", "expected a length"},
      {"Plan", "3 gt 3", "not coprime"},
      {"Plan", "3 gt 7", "the plan is of length 21"},
      {"Plan", "15", "neither a power of two nor an odd prime"},
      {"Plan", "5 gt 3z", "no block is named 3z"},
      {"Plan", "5 gt 2 / 4", "differ in length"},
      {"Plan", "7{3 gt 2 | 3 | 2 gt 5}", "the plan of the odd bins is not for length p-1"},
      {"Plan", "7{5 | 3 | 2 gt 3}", "the first transform has not length p-1"},
      {"Plan", "{3 | 5 gt 2}", "an odd plan begins with a power of two"},
      {"Orientation", "1,1", "takes w,u,conjugate"},
      {"Orientation", "3,1,0", "not coprime"},
      {"Orientation", "1,,0", "is not a number"},
      {"Sums in double", "1", "no sum of 1 additions can stand in double"},
      {"Sums in double", "one", "is not a number of additions"},
      {"Sums in double", "1 twice", "unknown word"},
  };
  const std::string file = rdft::table_name(rdft::Family::Forward);
  const std::vector<std::string> intact = lines(file);
  for (const Case& c : cases) {
    set(file, 15, c.column, c.text);
    expect_parts(refusal(rdft::Family::Forward), {file + ":15", c.reason});
    write(file, intact);
  }
  write(file, {intact.begin(), intact.end() - 1});
  expect_parts(refusal(rdft::Family::Forward), {file, "the table ends before N = 64"});
}

TEST_F(PlansCopy, TheProgramWritesNothingOnBadInput) {
  set("hartley_plans.tsv", 63, "Mul", "303");
  const std::filesystem::path output = folder_ / "unit.cpp";
  const auto generate = [&](const std::string& unit) {
    return std::system((std::string(XFM_GEN_RDFT) + " " + unit + " " + folder_.string() + " base " + output.string() + " 2> " +
                        (folder_ / "message").string()).c_str());
  };
  EXPECT_NE(generate("pgenhartley32f"), 0);
  expect_parts(lines("message").at(0), {"hartley_plans.tsv:63: N = 63; column Mul: the row has 303, the flow 302"});
  EXPECT_NE(generate("pgenhartley16f"), 0);
  expect_parts(lines("message").at(0), {"no unit or report is named pgenhartley16f"});
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_)) files += entry.is_regular_file();
  EXPECT_EQ(files, 6) << "the plans and the message";
  EXPECT_EQ(generate("pgenrdftfwdccs64f"), 0);
  EXPECT_TRUE(std::filesystem::exists(output));
}

}  // namespace
}  // namespace real_test
