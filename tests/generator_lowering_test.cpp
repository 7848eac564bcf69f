// Lowered programs without a compiler: every working form of every complex length against the formula, and what the
// library's kernels give against their programs, bit for bit.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <bit>

#include "dft/kernels.h"
#include "generator/check.h"
#include "generator/execute.h"
#include "rdft/lower.h"
#include "rdft/rows.h"
#include "tests/graph_values.h"
#include "xfm.h"

namespace {

using namespace xfm;
using namespace xfm::dft;

const ComplexTables& tables() {
  static const ComplexTables read = ComplexTables::read(XFM_PLANS);
  return read;
}

std::vector<graph_values::Value> complex_values(const Elements& x) {
  std::vector<graph_values::Value> out;
  for (size_t k = 0; k < x.size(); k += 2) out.emplace_back(x[k], x[k + 1]);
  return out;
}

// Values that a single can have; every seventh one is a zero, of either sign.
Elements some_values(int n) {
  std::mt19937 engine(n);
  Elements out(n);
  for (int i = 0; i < n; ++i) out[i] = i % 7 == 3 ? (i % 2 ? -0.0 : 0.0) : static_cast<float>(engine() / 2147483648.0 - 1);
  return out;
}

Elements executed(const Program& program, const Elements& source, size_t length, double scale) {
  std::vector<Elements> targets{Elements(length, std::numeric_limits<double>::quiet_NaN())};
  execute(program, {source}, scale, targets);
  return targets[0];
}

TEST(GeneratorLowering, EveryFormOfEveryLengthIsTheTransform) {
  int split = 0;
  for (const int precision : {32, 64})
    for (int n = 2; n <= 64; ++n)
      for (const int sign : {-1, +1})
        for (const WorkingForm* form : tables().row(precision, n).forms) {
          const ComplexBody body = complex_body(tables().row(precision, n), sign, {.form = form->name});
          ASSERT_EQ(body.form, form);
          split += form->name == "split";
          const Elements x = some_values(2 * n), y = executed(body.program, x, 2 * n, 1);
          const long double off = graph_values::deviation(complex_values(y), graph_values::definition(complex_values(x), sign));
          EXPECT_LT(off, precision == 32 ? 4e-7L : 8e-16L) << precision << " bits, N = " << n << ", " << describe(body);
        }
  EXPECT_EQ(split, 2 * (62 - 3 - 4)) << "single lengths but the smallest and those of 256 bits, both ways";
}

// A kernel of the library on the same values; `Real` is the precision.
template <class Real>
Elements called(const std::string& name, const Elements& source, size_t length) {
  const auto kernel = reinterpret_cast<XfmStatus (*)(const void*, void*, int)>(dlsym(RTLD_DEFAULT, name.c_str()));
  check(kernel != nullptr, name + " is found");
  const std::vector<Real> x(source.begin(), source.end());
  std::vector<Real> y(length);
  EXPECT_EQ(kernel(x.data(), y.data(), xfmScaleBySqrtN), xfmStatusOk) << name;
  return {y.begin(), y.end()};
}

void expect_same_bits(const std::string& name, int n, bool single, const Program& program, const Elements& x, size_t length) {
  const Real root = 1 / square_root(Real(n));
  const double scale = single ? static_cast<double>(static_cast<float>(root)) : static_cast<double>(root);
  const Elements expected = executed(program, x, length, scale);
  const Elements got = single ? called<float>(name, x, length) : called<double>(name, x, length);
  for (size_t k = 0; k < length; ++k)
    EXPECT_EQ(std::bit_cast<uint64_t>(got[k]), std::bit_cast<uint64_t>(expected[k])) << name << ", element " << k;
}

TEST(GeneratorLowering, ComplexKernelsDoWhatTheirProgramsDo) {
  for (const int precision : {32, 64})
    for (int n = 2; n <= 64; ++n)
      for (const int sign : {-1, +1}) {
        const std::string name = std::string(sign < 0 ? "xfmgDFTFwd" : "xfmgDFTInv") + "_CToC_" + std::to_string(n) + "_" +
                                 std::to_string(precision) + "fc";
        expect_same_bits(name, n, precision == 32, complex_body(tables().row(precision, n), sign).program, some_values(2 * n), 2 * n);
      }
}

TEST(GeneratorLowering, RealKernelsDoWhatTheirProgramsDo) {
  using namespace rdft;
  const struct {
    const char* name;
    Family family;
    Layout source, target;
  } transforms[] = {{"xfmgDFTFwd_RToPack_", Family::Forward, Layout::Samples, Layout::Pack},
                    {"xfmgDFTInv_CCSToR_", Family::Inverse, Layout::Ccs, Layout::Samples},
                    {"xfmgHartley_", Family::Hartley, Layout::Samples, Layout::Samples}};
  for (const auto& t : transforms)
    for (const Row& row : read_rows(XFM_PLANS, t.family))
      for (const Precision precision : {Precision::Single, Precision::Double}) {
        const bool single = precision == Precision::Single;
        const int n = row.length, cells = t.source == Layout::Ccs ? 2 * (n / 2 + 1) : n;
        expect_same_bits(t.name + std::to_string(n) + (single ? "_32f" : "_64f"), n, single,
                         lower(row.flow, t.source, t.target, precision), some_values(cells), n);
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
