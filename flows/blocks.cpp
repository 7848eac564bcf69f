#include "flows/blocks.h"

#include "flows/half_spectrum.h"
#include "generator/check.h"

namespace xfm {

std::vector<ComplexNumber> rader_spectrum(int prime, int sign) {
  const int length = prime - 1, inverse_root = power_mod(primitive_root(prime), prime - 2, prime);
  std::vector<ComplexNumber> spectrum(length);
  for (int j = 0; j < length; ++j) {
    ComplexNumber sum;
    int e = 1;
    for (int q = 0; q < length; ++q, e = e * inverse_root % prime) {
      const long long den = static_cast<long long>(prime) * length;
      const long long num = static_cast<long long>(sign) * e * length - static_cast<long long>(q) * j * prime;
      sum.re += cos_turn(num, den);
      sum.im += sin_turn(num, den);
    }
    const auto part = [&](Real x) { return is_zero(x / length) ? Real(0) : x / length; };
    spectrum[j] = {part(sum.re), part(sum.im)};
  }
  return spectrum;
}

std::vector<Ref> direct_parts(Graph& g, const std::vector<Ref>& x) {
  const int p = static_cast<int>(x.size()), h = (p - 1) / 2;
  std::vector<Ref> a(h + 1), c(h + 1);
  for (int m = 1; m <= h; ++m) {
    a[m] = g.add(x[m], x[p - m]);
    c[m] = g.sub(x[m], x[p - m]);
  }
  std::vector<Ref> parts(p);
  std::vector<Term> dc{{1, x[0]}};
  for (int m = 1; m <= h; ++m) dc.push_back({1, a[m]});
  parts[0] = g.lin(dc);
  for (int j = 1; j <= h; ++j) {
    std::vector<Term> t{{1, x[0]}}, u;
    for (int m = 1; m <= h; ++m) {
      t.push_back({cos_turn(j * m % p, p), a[m]});
      u.push_back({sin_turn(j * m % p, p), c[m]});
    }
    parts[j] = g.lin(t);
    parts[h + j] = g.lin(u);
  }
  return parts;
}

namespace {

// Rader as a block: the values at x[g^q] through the inner plan, the spectrum, and the plan back. x[0] enters at bin 0
// only, which feeds it to all outputs.
std::vector<Ref> rader_complex_block(Graph& g, const Recipes& recipes, const BlockForms& forms, int p,
                                     const std::vector<Ref>& x, int sign) {
  const Plan& inner = recipes.rader_inner.at(p);
  const int root = primitive_root(p), length = p - 1;
  std::vector<Ref> in, out(p);
  for (int q = 0; q < length; ++q) in.push_back(x[power_mod(root, q, p)]);
  std::vector<Ref> bins = complex_block(g, recipes, forms, inner, in, -1, false);
  out[0] = g.add(x[0], bins[0]);
  const std::vector<ComplexNumber> spectrum = rader_spectrum(p, sign);
  for (int j = 0; j < length; ++j) bins[j] = Physical{g}.times(bins[j], spectrum[j].re, spectrum[j].im);
  bins[0] = g.add(x[0], bins[0]);
  const std::vector<Ref> c = complex_block(g, recipes, forms, mirrored(inner), bins, +1, false);
  const int inverse_root = power_mod(root, p - 2, p);
  for (int q = 0; q < length; ++q) out[power_mod(inverse_root, q, p)] = c[q];
  return out;
}

}  // namespace

std::vector<Ref> complex_block(Graph& g, const Recipes& recipes, const BlockForms& forms, const Plan& plan,
                               const std::vector<Ref>& x, int sign, bool first_stage) {
  const auto prime = [&](const Plan& block, const std::vector<Ref>& in, bool first) {
    const int p = block.length;
    switch (forms.of(p, first)) {
      case BlockForm::Direct: return direct_block(Physical{g}, in, sign);
      case BlockForm::RealLane: return real_lane_block(Physical{g}, recipes, recipes.by_prime.at(p), p, in, sign);
      case BlockForm::RaderComplex: return rader_complex_block(g, recipes, forms, p, in, sign);
    }
    return std::vector<Ref>{};
  };
  return planned(Physical{g}, plan, x, sign, first_stage, prime);
}

}  // namespace xfm
