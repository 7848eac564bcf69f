#include "dft/blocks.h"

namespace xfm {

namespace {

// Rader as a block: the values at x[g^q] through the inner plan, the spectrum, and the plan back. x[0] enters at bin 0
// only, which feeds it to all outputs.
std::vector<Ref> rader_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign) {
  const int p = plan.length, root = primitive_root(p), length = p - 1;
  std::vector<Ref> in, out(p);
  for (int q = 0; q < length; ++q) in.push_back(x[power_mod(root, q, p)]);
  std::vector<Ref> bins = complex_block(g, plan.first(), in, -1);
  out[0] = g.add(x[0], bins[0]);
  const std::vector<ComplexNumber> spectrum = rader_spectrum(p, root, sign);
  for (int j = 0; j < length; ++j) bins[j] = Physical{g}.times(bins[j], spectrum[j].re, spectrum[j].im);
  bins[0] = g.add(x[0], bins[0]);
  const std::vector<Ref> c = complex_block(g, mirrored(plan.first()), bins, +1);
  const int inverse_root = inverse_mod(root, p);
  for (int q = 0; q < length; ++q) out[power_mod(inverse_root, q, p)] = c[q];
  return out;
}

}  // namespace

std::vector<Ref> half_spectrum_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign) {
  HalfSpectra flow(g, {});
  return joined<Physical>(Physical{g}, x, [&](std::span<const Ref> part) { return flow.with_sign(plan, part, sign); });
}

std::vector<Ref> complex_block(Graph& g, const Plan& plan, std::span<const Ref> x, int sign) {
  const auto prime = [&](const Plan& block, std::span<const Ref> in) {
    return block.kind == Plan::Kind::ComplexRader ? rader_block(g, block, in, sign) : half_spectrum_block(g, block, in, sign);
  };
  return planned<Physical>(Physical{g}, plan, x, sign, prime);
}

}  // namespace xfm
