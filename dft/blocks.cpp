#include "dft/blocks.h"

namespace xfm::dft {

std::vector<Ref> half_spectrum_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign) {
  HalfSpectra flow(g, Convention::Complex);
  return joined<Physical>(Physical{g}, x, [&](std::span<const Ref> part) { return flow.with_sign(plan, part, sign); });
}

std::vector<Ref> complex_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign) {
  const Physical alg{g};
  const auto multiply = [&](std::vector<Ref>& bins, const std::vector<ComplexNumber>& constants) {
    for (size_t j = 0; j < bins.size(); ++j) bins[j] = times(alg, bins[j], constants[j]);
  };
  const auto prime = [&](const Plan& block, std::span<const Ref> in) {
    if (block.kind != Plan::Kind::ComplexRader) return half_spectrum_block(g, block, in, sign);
    return complex_rader(block, in, sign, [&](Ref a, Ref b) { return g.add(a, b); }, multiply,
                         [&](const Plan& inner, std::span<const Ref> values, int s) { return complex_block(g, inner, values, s); });
  };
  return planned<Physical>(alg, plan, x, sign, prime);
}

}  // namespace xfm::dft
