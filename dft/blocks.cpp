#include "dft/blocks.h"

namespace xfm {

namespace {

// Rader as a block: the values at x[g^q] through the inner plan, the spectrum, and the plan back. x[0] enters at bin 0
// only, which feeds it to all outputs.
std::vector<Ref> rader_complex_block(Graph& g, const Recipes& recipes, const BlockForms& forms, int p,
                                     std::span<const Ref> x, int sign) {
  const Plan& inner = recipes.rader_inner.at(p);
  const int root = primitive_root(p), length = p - 1;
  std::vector<Ref> in, out(p);
  for (int q = 0; q < length; ++q) in.push_back(x[power_mod(root, q, p)]);
  std::vector<Ref> bins = complex_block(g, recipes, forms, inner, in, -1, false);
  out[0] = g.add(x[0], bins[0]);
  const std::vector<ComplexNumber> spectrum = rader_spectrum(p, root, sign);
  for (int j = 0; j < length; ++j) bins[j] = Physical{g}.times(bins[j], spectrum[j].re, spectrum[j].im);
  bins[0] = g.add(x[0], bins[0]);
  const std::vector<Ref> c = complex_block(g, recipes, forms, mirrored(inner), bins, +1, false);
  const int inverse_root = inverse_mod(root, p);
  for (int q = 0; q < length; ++q) out[power_mod(inverse_root, q, p)] = c[q];
  return out;
}

}  // namespace

std::vector<Ref> half_spectrum_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign, const PrimePlans& primes) {
  HalfSpectra flow(g, {}, primes);
  return joined<Physical>(Physical{g}, x, [&](std::span<const Ref> part) { return flow.with_sign(plan, part, sign); });
}

PrimePlans prime_plans(const Recipes& recipes, const BlockForms& forms, bool first_stage) {
  return [&recipes, forms, first_stage](int prime, bool real_row) {
    return forms.of(prime, first_stage && real_row) == BlockForm::RealLane ? &recipes.by_prime.at(prime) : nullptr;
  };
}

std::vector<Ref> complex_block(Graph& g, const Recipes& recipes, const BlockForms& forms, const Plan& plan,
                               std::span<const Ref> x, int sign, bool first_stage) {
  const auto prime = [&](const Plan& block, std::span<const Ref> in, bool first) {
    const BlockForm form = forms.of(block.length, first);
    if (form == BlockForm::RaderComplex) return rader_complex_block(g, recipes, forms, block.length, in, sign);
    return half_spectrum_block(g, form == BlockForm::Direct ? block : recipes.by_prime.at(block.length), in, sign);
  };
  return planned<Physical>(Physical{g}, plan, x, sign, first_stage, prime);
}

}  // namespace xfm
