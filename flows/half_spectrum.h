// Transforms of real data, all with the exponent exp(-2*pi*i*n*k/N): half spectra from stage to stage.
//
// Real data have bins 0..N/2, of which bin 0 and, for even N, bin N/2 are real. A stage forms only bins that are not
// conjugates of others. The first stage of a link works real data; of its second, the rows of real bins are real transforms
// and the others complex ones.
//
// Complex data have two real parts: a block can run on both apart, and the rotation by i that joins the parts is put off to
// one sum and one difference for every pair of bins k, N-k (`joined`).
#pragma once

#include <vector>

#include "flows/blocks.h"

namespace xfm {

using Half = std::vector<Pair>;  // bins 0..N/2

class HalfSpectra {
 public:
  HalfSpectra(Graph& g, Convention convention) : g_(g), pairs_{g, convention} {}

  enum class Wanted { All, Odd };  // bins that are not wanted may be left out
  Half real(const Plan& plan, std::span<const Ref> x, Wanted wanted = Wanted::All);
  std::vector<Pair> complex(const Plan& plan, std::span<const Pair> z);
  // Bins with the exponent's sign.
  Half with_sign(const Plan& plan, std::span<const Ref> x, int sign);

 private:
  Half block(const Plan& plan, std::span<const Ref> x, int sign, Wanted wanted);
  Half direct(std::span<const Ref> x, int sign);
  Half odd_of_eight(std::span<const Ref> d);
  Half halves(const Plan& plan, std::span<const Ref> x, Wanted wanted);
  Half linked(const Plan& plan, std::span<const Ref> x, Wanted wanted);
  void rotated_row(const Plan& second, std::vector<Pair> row, int k1, const LinkMap& map, class HalfBins& bins);
  void middle_row(const Plan& second, const std::vector<Pair>& row, const LinkMap& map, HalfBins& bins);
  Half rader(const Plan& plan, std::span<const Ref> x, int sign);
  std::vector<Ref> second_transform(const Plan& plan, const Half& spectrum, Wanted wanted);

  // What is made inside carries the name of this part of the flow.
  template <class F>
  auto within(const char* name, F make) {
    const Graph::Loop loop(g_, name);
    return make();
  }

  bool for_complex_kernel() const { return pairs_.convention == Convention::Complex; }

  Graph& g_;
  Pairs pairs_;
};

// A block over complex values, worked as two half spectra; `half` makes one from the values of a component, and its bins
// have the sign of the exponent.
template <class A, class HalfOf>
std::vector<typename A::Value> joined(const A& alg, std::span<const typename A::Value> x, const HalfOf& half) {
  using Value = typename A::Value;
  const std::vector<Value> parts = alg.by_components(x, [&](std::span<const Ref> component) {
    std::vector<Ref> flat;
    for (const Pair& bin : half(component)) flat.push_back(bin.re), flat.push_back(bin.im);
    return flat;
  });
  const int n = static_cast<int>(x.size());
  std::vector<Value> y(n);
  for (int k = 0; k <= n / 2; ++k) {
    const Graph::Loop loop(alg.g, "bin", k);
    y[k] = parts[2 * k];
    if (real_bin(k, n)) continue;
    const Value im = alg.turned(parts[2 * k + 1], 1);
    y[k] = alg.add(parts[2 * k], im);
    y[n - k] = alg.sub(parts[2 * k], im);
  }
  return y;
}

}  // namespace xfm
