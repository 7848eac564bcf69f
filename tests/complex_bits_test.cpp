// The complex kernels of the built library against what their graphs on one lane say, bit for bit: all lengths, directions and
// flags, inputs with zeros of both signs, infinities and subnormals among them. Of NaNs only the place counts.
#include <random>

#include "dft/kernels.h"
#include "dft/tables.h"
#include "generator/interpret.h"
#include "tests/complex_support.h"

namespace {

using namespace complex_test;
using namespace xfm;
using namespace xfm::dft;

const ComplexTables& tables() {
  static const ComplexTables read = ComplexTables::read(XFM_PLANS);
  return read;
}

enum class Data { Plain, Zeros, Infinities, Subnormals, SmallIntegers };
constexpr Data kData[] = {Data::Plain, Data::Zeros, Data::Infinities, Data::Subnormals, Data::SmallIntegers};

// Small integers make sums that vanish.
template <class T>
T value_of(Data data, std::mt19937& engine) {
  const T plain = static_cast<T>(static_cast<double>(engine()) / 2147483648.0 - 1.0);
  const unsigned die = engine() % 8;
  switch (data) {
    case Data::Plain: return plain;
    case Data::Zeros: return die < 3 ? T(0) : die < 6 ? -T(0) : plain;
    case Data::Infinities: return die == 0 ? std::copysign(std::numeric_limits<T>::infinity(), plain) : die == 1 ? -T(0) : plain;
    case Data::Subnormals: return plain * std::numeric_limits<T>::min() * (die < 6 ? 1 : 64);
    case Data::SmallIntegers: return static_cast<T>(static_cast<int>(die % 3) - 1);
  }
  return plain;
}

// Where they differ, in words; empty where they do not.
template <class T>
std::string difference(const std::vector<T>& got, const std::vector<std::complex<T>>& expected) {
  for (size_t i = 0; i < got.size(); ++i) {
    const T e = i % 2 ? expected[i / 2].imag() : expected[i / 2].real();
    if (bits(got[i]) == bits(e) || (std::isnan(got[i]) && std::isnan(e))) continue;
    char text[120];
    std::snprintf(text, sizeof text, "bin %zu %s: the graph gives %a, the kernel %a", i / 2, i % 2 ? "imaginary" : "real", double(e),
                  double(got[i]));
    return text;
  }
  return {};
}

class ComplexBits : public ByDispatcher {};
INSTANTIATE_TEST_SUITE_P(All, ComplexBits, testing::ValuesIn(kDispatchers), dispatcher_name);

TEST_P(ComplexBits, AreThoseOfTheGraph) {
  for_each_kernel([](const auto& kernel, auto one) {
    using T = decltype(one);
    const int precision = sizeof(T) == 4 ? 32 : 64;
    const ComplexRow& row = tables().row(precision, kernel.n);
    const LanedTransform graph = laned_transform(row.plan, kernel.sign, 1, Placement::Nested);
    const Interpreter<T> definition(graph.graph, row.widens_products());
    std::mt19937 engine(kernel.n);
    for (const Data data : kData)
      for (const int flag : kFlags) {
        std::vector<T> src;
        std::vector<std::complex<T>> values;
        for (int i = 0; i < kernel.n; ++i) {
          const T re = value_of<T>(data, engine), im = value_of<T>(data, engine);
          src.insert(src.end(), {re, im});
          values.emplace_back(re, im);
        }
        const Call<T> call{kernel, flag, "data " + std::to_string(static_cast<int>(data))};
        ASSERT_EQ(difference(run(call, src), definition.run(graph.outputs, values, kernel.scale(flag))), "") << call;
      }
  });
}

}  // namespace
