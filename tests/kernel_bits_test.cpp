// The complex, real, Hartley and Walsh-Hadamard kernels of the loaded library against what their graphs on one lane say, bit
// for bit: all lengths, layouts, directions and flags, inputs with zeros of both signs, infinities and subnormals among them.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "dft/kernels.h"
#include "generator/check.h"
#include "generator/functions.h"
#include "generator/interpret.h"
#include "rdft/interpret.h"
#include "rdft/rows.h"
#include "rdft/transforms.h"
#include "tests/arrays.h"
#include "tests/kernel_values.h"
#include "tests/scale.h"
#include "wht/levels.h"
#include "xfm.h"

namespace {

using namespace xfm;
using namespace xfm::dft;
using namespace kernel_values;

const FunctionList& functions() {
  static const FunctionList list = FunctionList::read(XFM_FUNCTIONS);
  return list;
}

// What a kernel must give for a source of that many elements.
template <class T>
struct Definition {
  int source;
  std::function<std::vector<T>(const std::vector<T>& src, T scale)> result;
};

template <class T>
std::vector<std::complex<T>> pairs(const std::vector<T>& x) {
  std::vector<std::complex<T>> out;
  for (size_t i = 0; i < x.size(); i += 2) out.emplace_back(x[i], x[i + 1]);
  return out;
}

template <class T>
Definition<T> complex_definition(const Function& f) {
  static const ComplexTables tables = ComplexTables::read(XFM_PLANS);
  const int precision = sizeof(T) == 4 ? 32 : 64, sign = f.scale == ScaleRule::Forward ? -1 : +1;
  const ComplexRow& row = tables.row(precision, f.size);
  const auto graph = std::make_shared<LanedTransform>(laned_transform(row.plan, sign, 1, Placement::Nested));
  return {2 * f.size, [graph, widen = row.widens_products()](const std::vector<T>& src, T scale) {
            std::vector<T> out;
            for (const auto& v : Interpreter<T>(graph->graph, widen).run(graph->outputs, pairs(src), scale)) out.insert(out.end(), {v.real(), v.imag()});
            return out;
          }};
}

template <class T>
Definition<T> real_definition(const Function& f) {
  using namespace rdft;
  const Transform& t = transform_of(f.family);
  static std::map<Family, std::vector<Row>> tables;
  if (!tables.contains(t.family)) tables[t.family] = read_rows(XFM_PLANS, t.family);
  const Row& row = *std::ranges::find(tables[t.family], f.size, &Row::length);
  const int source = f.size + static_cast<int>(zero_positions(t.source, f.size).size());
  return {source, [&row, from = t.source, to = t.target](const std::vector<T>& src, T scale) {
            return FlowInterpreter<T>(row.flow).run(src, from, to, scale);
          }};
}

template <class T>
Definition<T> hadamard_definition(const Function& f) {
  const auto graph = std::make_shared<wht::Levels>(wht::levels(f.size));
  return {1 << f.size, [graph](const std::vector<T>& src, T scale) {
            std::vector<std::complex<T>> values(src.begin(), src.end());
            std::vector<T> out;
            for (const auto& v : Interpreter<T>(graph->graph, false).run(graph->outputs, values, scale)) out.push_back(v.real());
            return out;
          }};
}

template <class T>
void expect_bits_of_the_graph(const Function& f) {
  using Kernel = XfmStatus(const T*, T*, int, void*);  // without a work buffer, and the others look at no fourth argument
  const auto kernel = reinterpret_cast<Kernel*>(dlsym(RTLD_DEFAULT, f.name.c_str()));
  ASSERT_NE(kernel, nullptr) << f.name;
  const Definition<T> definition = f.part == "dft" ? complex_definition<T>(f) : f.part == "wht" ? hadamard_definition<T>(f) : real_definition<T>(f);
  std::mt19937 engine(f.size);
  for (const Data data : kData)
    for (const int flag : test_arrays::kFlags) {
      const std::vector<T> src = values_of<T>(data, definition.source, engine);
      const std::vector<T> expected = definition.result(src, test_scale::scale_of<T>(f.scale, flag, f.part == "wht" ? 1 << f.size : f.size));
      std::vector<T> dst(expected.size(), T(-7));
      ASSERT_EQ(kernel(src.data(), dst.data(), flag, nullptr), xfmStatusOk) << f.name;
      const size_t at = difference(dst, expected);
      ASSERT_EQ(at, dst.size()) << f.name << ", flag " << flag << ", data " << static_cast<int>(data) << ": the graph gives " << std::hexfloat
                                << expected[at] << ", the kernel " << dst[at];
    }
}

class KernelBits : public testing::TestWithParam<std::string> {};

TEST_P(KernelBits, AreThoseOfTheGraph) {
  for (const Function* f : functions().kernels(GetParam()))
    f->type.starts_with("32") ? expect_bits_of_the_graph<float>(*f) : expect_bits_of_the_graph<double>(*f);
}

std::vector<std::string> dispatchers() {
  std::vector<std::string> names;
  for (const Function& f : functions().functions())
    if (f.kind == FunctionKind::Dispatcher && f.part != "dct4") names.push_back(f.name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(All, KernelBits, testing::ValuesIn(dispatchers()), [](const auto& info) { return info.param.substr(4); });

TEST(Kernels, AreAllCompared) {
  size_t kernels = 0;
  for (const std::string& name : dispatchers()) kernels += functions().kernels(name).size();
  EXPECT_EQ(kernels, 252u + 756u + 126u + 26u);
}

}  // namespace
