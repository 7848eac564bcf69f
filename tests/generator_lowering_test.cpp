// Lowered programs without a compiler: every working form of every complex length, and the scalar programs of the real
// transforms, give the bits that their graphs say.
#include <gtest/gtest.h>

#include "dft/kernels.h"
#include "generator/check.h"
#include "generator/execute.h"
#include "generator/interpret.h"
#include "rdft/interpret.h"
#include "rdft/lower.h"
#include "rdft/rows.h"
#include "rdft/transforms.h"
#include "tests/kernel_values.h"
#include "tests/live_lanes.h"

namespace {

using namespace xfm;
using namespace xfm::dft;
using namespace kernel_values;

const ComplexTables& tables() {
  static const ComplexTables read = ComplexTables::read(XFM_PLANS);
  return read;
}

Elements executed(const Program& program, const Elements& source, size_t length, double scale) {
  std::vector<Elements> targets{Elements(length, std::numeric_limits<double>::quiet_NaN())};
  execute(program, {source}, scale, targets);
  return targets[0];
}

// A program against what the graph says, for all kinds of data; `definition` takes the source and the scale.
template <class T, class Definition>
void expect_bits(const Program& program, size_t count, const Definition& definition, const std::string& what) {
  std::mt19937 engine(static_cast<unsigned>(count));
  for (const Data data : kData) {
    const std::vector<T> source = values_of<T>(data, count, engine);
    const T scale = data == Data::Plain ? T(1) / 3 : T(1);
    const std::vector<T> expected = definition(source, scale);
    const Elements got = executed(program, Elements(source.begin(), source.end()), expected.size(), scale);
    const size_t at = difference(got, expected);
    ASSERT_EQ(at, expected.size()) << what << ", data " << static_cast<int>(data) << ": the graph gives " << std::hexfloat << expected[at]
                                   << ", the program " << got[at];
  }
}

template <class T>
void expect_bits_of_complex_forms(const ComplexRow& row, int sign) {
  const int n = row.plan.plan.length;
  const LanedTransform graph = laned_transform(row.plan, sign, 1, Placement::Nested);
  const auto definition = [&](const std::vector<T>& source, T scale) {
    std::vector<std::complex<T>> x;
    for (int i = 0; i < n; ++i) x.emplace_back(source[2 * i], source[2 * i + 1]);
    std::vector<T> y;
    for (const auto& v : Interpreter<T>(graph.graph, row.widens_products()).run(graph.outputs, x, scale)) y.insert(y.end(), {v.real(), v.imag()});
    return y;
  };
  for (const WorkingForm* form : row.forms) {
    const ComplexBody body = complex_body(row, sign, {.form = form->name});
    ASSERT_EQ(body.form, form);
    expect_bits<T>(body.program, 2 * n, definition, row.where + ", " + describe(body));
  }
}

TEST(GeneratorLowering, EveryFormOfEveryComplexLengthHasTheBitsOfTheGraph) {
  size_t forms = 0;
  for (const auto& [of, row] : tables().rows) {
    forms += row.forms.size();
    for (const int sign : {-1, +1})
      of.first == 32 ? expect_bits_of_complex_forms<float>(row, sign) : expect_bits_of_complex_forms<double>(row, sign);
  }
  EXPECT_EQ(forms, 63u + 63 + (63 - 4 - 4)) << "two of single lengths but the smallest and those of 256 bits";
}

// Lane by lane a program does what its row states, and the products with the scale, whatever the register: nothing is done twice,
// and what a lane does beside others keeps its value.
TEST(GeneratorLowering, ComplexProgramsDoTheOperationsOfTheirRows) {
  for (const auto& [of, row] : tables().rows)
    for (const int sign : {-1, +1}) {
      const ComplexBody body = complex_body(row, sign);
      const test::LaneCounts counts = test::LiveLanes(body.program).counts();
      EXPECT_EQ(counts.sums, row.built.additions) << row.where << ", " << describe(body);
      EXPECT_EQ(counts.products - counts.opposite, row.built.multiplications + 2 * row.plan.plan.length) << row.where << ", " << describe(body);
    }
}

// The gate between a flow's costs and its program speaks of each of them.
TEST(GeneratorLowering, ProgramsThatDoNotDoWhatTheirFlowCostsAreRefused) {
  using namespace rdft;
  using C = FlowCounts;
  const Row row = read_rows(XFM_PLANS, Family::Forward)[13];  // 15 points: it has all but doublings
  const Program program = lower(row.flow, Layout::Samples, Layout::Pack, Precision::Single);
  EXPECT_NO_THROW(check_lowered(program, row.flow, row.counts, Precision::Single));
  using Count = int C::*;
  for (const Count count : {Count(&C::single_additions), Count(&C::double_additions), Count(&C::multiplications), Count(&C::doublings),
                            Count(&C::widenings), Count(&C::inner_narrowings)}) {
    C other = row.counts;
    ++(other.*count);
    EXPECT_THROW(check_lowered(program, row.flow, other, Precision::Single), InternalError);
  }
}

TEST(GeneratorLowering, RealProgramsHaveTheBitsOfTheFlow) {
  using namespace rdft;
  for (const char* name : {"xfmgDFTFwd_RToPack", "xfmgDFTInv_CCSToR", "xfmgHartley"}) {
    const Transform& t = transform_of(name);
    for (const Row& row : read_rows(XFM_PLANS, t.family)) {
      const auto check_in = [&]<class T>(T, Precision precision) {
        const auto definition = [&](const std::vector<T>& x, T scale) { return FlowInterpreter<T>(row.flow).run(x, t.source, t.target, scale); };
        expect_bits<T>(lower(row.flow, t.source, t.target, precision), row.length + zero_positions(t.source, row.length).size(), definition,
                       table_name(t.family) + ", N = " + std::to_string(row.length));
      };
      check_in(float(), Precision::Single);
      check_in(double(), Precision::Double);
    }
  }
}

TEST(GeneratorLowering, AccessesOutsideTheArraysAreSeen) {
  Program p;
  p.store(StoreKind::Full, p.emit({.op = Op::Load, .type = Type::F64x4, .cell = 2}), 0);
  EXPECT_THROW(executed(p, Elements(5), 4, 1), InternalError);
  EXPECT_THROW(executed(p, Elements(6), 3, 1), InternalError);
  EXPECT_EQ(executed(p, {0, 1, 2, 3, 4, 5}, 4, 1), (Elements{2, 3, 4, 5}));
}

}  // namespace
