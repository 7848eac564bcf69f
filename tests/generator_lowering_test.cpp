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

namespace {

using namespace xfm;
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

// Every form in which the length is lowered; how many there are.
template <class T>
int expect_bits_of_complex_forms(int n, int sign) {
  const int precision = 8 * sizeof(T);
  const LanedTransform graph = laned_transform(tables().row(precision, n).plan, sign, 1, Placement::Nested);
  const auto definition = [&](const std::vector<T>& source, T scale) {
    std::vector<std::complex<T>> x;
    for (int i = 0; i < n; ++i) x.emplace_back(source[2 * i], source[2 * i + 1]);
    std::vector<T> y;
    for (const auto& v : Interpreter<T>(graph.graph, widens_products(precision, n)).run(graph.outputs, x, scale)) y.insert(y.end(), {v.real(), v.imag()});
    return y;
  };
  int forms = 0;
  for (const Form form : {Form::Scalar, Form::Split, Form::Interleaved}) {
    const ComplexBody body = complex_body(tables(), precision, n, sign, {.form = form});
    if (body.form != form) continue;
    ++forms;
    expect_bits<T>(body.program, 2 * n, definition, std::to_string(precision) + " bits, N = " + std::to_string(n) + ", " + describe(body));
  }
  return forms;
}

TEST(GeneratorLowering, EveryFormOfEveryComplexLengthHasTheBitsOfTheGraph) {
  int forms = 0;
  for (int n = 2; n <= 64; ++n)
    for (const int sign : {-1, +1}) forms += expect_bits_of_complex_forms<float>(n, sign) + expect_bits_of_complex_forms<double>(n, sign);
  EXPECT_EQ(forms, 2 * (63 + 63 + (63 - 4 - 4))) << "two of most single lengths: split and interleaved";
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
