#include "flows/half_spectrum.h"

#include "generator/check.h"
#include "generator/passes.h"

namespace xfm {

// Bins of a real sequence's transform, kept for 0..n/2; a bin above is kept as the conjugate of its mirror.
class HalfBins {
 public:
  explicit HalfBins(int n) : n_(n), bins_(n / 2 + 1) {}

  void put(int k, Formal::Value v) {
    k %= n_;
    if (k > n_ - k) k = n_ - k, v.im = -v.im;
    if (!bins_.at(k)) bins_[k] = 2 * k % n_ == 0 ? Formal::Value{v.re, {}} : v;
  }
  std::vector<Formal::Value> take() { return std::move(bins_); }

 private:
  int n_;
  std::vector<Formal::Value> bins_;
};

namespace {

std::vector<Ref> with_zeros(std::vector<Ref> x) {
  x.resize(2 * x.size());
  return x;
}

}  // namespace

std::vector<Formal::Value> RealFlow::complex_bins(const Plan& plan, const std::vector<Formal::Value>& z) {
  const Formal alg{g_};
  const auto prime = [&](const Plan& block, const std::vector<Formal::Value>& in, bool) {
    const Plan& form = block.kind == Plan::Kind::Rows ? block.second() : block;
    if (form.kind == Plan::Kind::NamedRader)
      return real_lane_block(alg, recipes_, recipes_.by_name.at(form.name), form.length, in, -1);
    if (forms_.of(form.length, false) == BlockForm::RealLane)
      return real_lane_block(alg, recipes_, recipes_.by_prime.at(form.length), form.length, in, -1);
    return direct_block(alg, in, -1);
  };
  return planned(alg, plan, z, -1, false, prime);
}

RealFlow::Half RealFlow::half_spectrum(const Plan& plan, const std::vector<Ref>& x) {
  switch (plan.kind) {
    case Plan::Kind::Rows: return half_spectrum(plan.first(), x);
    case Plan::Kind::NamedRader: return rader_half(recipes_.by_name.at(plan.name), plan.length, x);
    case Plan::Kind::Halves: return halves(plan, x);
    case Plan::Kind::CooleyTukey:
    case Plan::Kind::GoodThomas: return linked(plan, x);
    case Plan::Kind::Block: return block(plan.length, x);
  }
  return {};
}

RealFlow::Half RealFlow::block(int length, const std::vector<Ref>& x) {
  if (length == 1) return {{x[0], {}}};
  if (length == 2) return {{g_.add(x[0], x[1]), {}}, {g_.sub(x[0], x[1]), {}}};
  if (length == 4) {
    const Ref s = g_.add(x[0], x[2]), d = g_.sub(x[0], x[2]), e = g_.add(x[1], x[3]), f = g_.sub(x[1], x[3]);
    return {{g_.add(s, e), {}}, {d, -f}, {g_.sub(s, e), {}}};
  }
  if (forms_.of(length, first_stage_) == BlockForm::RealLane) return rader_half(recipes_.by_prime.at(length), length, x);
  const std::vector<Ref> parts = direct_parts(g_, x);
  const int h = length / 2;
  Half out{{parts[0], {}}};
  for (int j = 1; j <= h; ++j) out.push_back({parts[j], -parts[h + j]});
  return out;
}

RealFlow::Half RealFlow::halves(const Plan& plan, const std::vector<Ref>& x) {
  const int m = plan.length / 2;
  std::vector<Ref> u, v;
  for (int q = 0; q < m; ++q) {
    u.push_back(g_.add(x[q], x[q + m]));
    v.push_back(g_.sub(x[q], x[q + m]));
  }
  const Half even = half_spectrum(plan.first(), u), odd = half_spectrum(plan.second(), with_zeros(v));
  HalfBins bins(plan.length);
  for (int k = 0; k <= m / 2; ++k) bins.put(2 * k, even[k]);
  for (int k = 1; k <= m; k += 2) bins.put(k, odd[k]);
  return bins.take();
}

RealFlow::Half RealFlow::linked(const Plan& plan, const std::vector<Ref>& x) {
  const LinkMap map(plan);
  const Formal alg{g_};
  std::vector<Half> u;
  for (int j = 0; j < map.b; ++j) {
    std::vector<Ref> in(map.a);
    for (int i = 0; i < map.a; ++i) in[i] = x[map.input(i, j)];
    u.push_back(half_spectrum(plan.first(), in));
  }
  HalfBins bins(plan.length);
  for (int k1 = 0; k1 <= map.a / 2; ++k1) {
    const bool real = k1 == 0 || (2 * k1 == map.a);
    if (real && (k1 == 0 || !map.twiddles)) {
      std::vector<Ref> row;
      for (const Half& h : u) row.push_back(h[k1].re);
      const Half z = half_spectrum(plan.second(), row);
      for (int k2 = 0; k2 <= map.b / 2; ++k2) bins.put(map.output(k1, k2), z[k2]);
    } else if (real) {
      std::vector<Ref> row;
      for (const Half& h : u) row.push_back(h[k1].re);
      middle_row(plan.second(), row, k1, map.a, bins);
    } else {
      std::vector<Formal::Value> row;
      for (int j = 0; j < map.b; ++j)
        row.push_back(map.twiddles ? twiddled(alg, u[j][k1], -j * k1, map.length()) : u[j][k1]);
      const std::vector<Formal::Value> z = complex_bins(plan.second(), row);
      for (int k2 = 0; k2 < map.b; ++k2) bins.put(map.output(k1, k2), z[k2]);
    }
  }
  return bins.take();
}

// The row at half the sampling rate of a twiddled link is real times exp(-i*pi*j/b). For odd b that is a real transform of
// the row with alternating signs, its bins moved by (b-1)/2.
void RealFlow::middle_row(const Plan& second, const std::vector<Ref>& row, int k1, int a, HalfBins& bins) {
  const int b = static_cast<int>(row.size());
  if (b % 2 == 1 && !complex_middle_row_) {
    std::vector<Ref> alternating;
    for (int j = 0; j < b; ++j) alternating.push_back(j % 2 ? -row[j] : row[j]);
    const Half z = half_spectrum(second, alternating);
    for (int k2 = 0; k2 <= b / 2; ++k2) bins.put(k1 + a * (k2 + (b - 1) / 2), z[k2]);
    return;
  }
  std::vector<Formal::Value> rotated;
  for (int j = 0; j < b; ++j) rotated.push_back(twiddled(Formal{g_}, Formal::Value{row[j], {}}, -j * k1, a * b));
  const std::vector<Formal::Value> z = complex_bins(second, rotated);
  for (int k2 = 0; k2 < b; ++k2) bins.put(k1 + a * k2, z[k2]);
}

std::vector<Ref> RealFlow::transposed_part(const Plan& plan, const Half& spectrum, bool odd) {
  const int m = static_cast<int>(spectrum.size()) - 1;
  Graph network(g_.lanes());
  std::vector<int> inputs;
  std::vector<Ref> in;
  for (int i = 0; i < m; ++i) {
    in.push_back(network.input(std::vector<int>(network.lanes(), i)));
    inputs.push_back(in.back().node);
  }
  RealFlow flow(network, recipes_, complex_middle_row_);
  const bool split = plan.kind == Plan::Kind::Halves;
  const Half bins = split && !odd ? flow.half_spectrum(plan.first(), in)
                                  : flow.half_spectrum(split ? plan.second() : plan, with_zeros(in));
  std::vector<Ref> outputs, feed;
  for (size_t i = 0; i < bins.size(); ++i) {
    const int k = split && !odd ? 2 * static_cast<int>(i) : static_cast<int>(i);
    if (k % 2 != (odd ? 1 : 0)) continue;
    outputs.push_back(bins[i].re), feed.push_back(spectrum[k].re);
    if (bins[i].im) outputs.push_back(bins[i].im), feed.push_back(spectrum[k].im);
  }
  return transpose(network, inputs, outputs, g_, feed);
}

std::vector<Ref> RealFlow::prime_parts(const LaneRecipe& recipe, int prime, const std::vector<Ref>& x, int sign) {
  const int length = prime - 1, root = primitive_root(prime);
  std::vector<Ref> in;
  for (int q = 0; q < length; ++q) in.push_back(x[power_mod(root, q, prime)]);
  const Half bins = half_spectrum(recipe.first, in);
  std::vector<Ref> parts{g_.add(x[0], bins[0].re)};
  const std::vector<ComplexNumber> spectrum = rader_spectrum(prime, sign);
  Half product;
  for (int j = 0; j <= length / 2; ++j) {
    const ComplexNumber c = j % 2 ? ComplexNumber{spectrum[j].im, -spectrum[j].re} : spectrum[j];
    if (2 * j % length == 0) {
      product.push_back({g_.scale(c.re, bins[j].re), {}});
    } else {
      product.push_back(Formal{g_}.times(bins[j], 2 * c.re, 2 * c.im));
    }
  }
  product[0].re = g_.add(x[0], product[0].re);
  for (const bool odd : {false, true})
    for (Ref r : transposed_part(recipe.second, product, odd)) parts.push_back(r);
  return parts;
}

RealFlow::Half RealFlow::rader_half(const LaneRecipe& recipe, int prime, const std::vector<Ref>& x) {
  const std::vector<Ref> parts = RealFlow(g_, recipes_, recipe.complex_middle_row).prime_parts(recipe, prime, x, -1);
  const int half = prime / 2, inverse_root = power_mod(primitive_root(prime), prime - 2, prime);
  HalfBins bins(prime);
  bins.put(0, {parts[0], {}});
  for (int q = 0; q < half; ++q) bins.put(power_mod(inverse_root, q, prime), {parts[1 + q], parts[1 + half + q]});
  return bins.take();
}

std::vector<Ref> real_lane_plan(Graph& g, const Recipes& recipes, const BlockForms& forms, const Plan& plan,
                                const std::vector<Ref>& x, int sign, bool first_stage) {
  const RealFlow::Half bins = RealFlow(g, recipes, forms, first_stage).half_spectrum(plan, x);
  std::vector<Ref> y(plan.length);
  for (int k = 0; 2 * k <= plan.length; ++k) {
    y[k] = bins[k].re;
    if (!bins[k].im) continue;
    const Ref turned = bins[k].im.turned(-sign);
    y[k] = g.add(bins[k].re, turned);
    y[plan.length - k] = g.sub(bins[k].re, turned);
  }
  return y;
}

}  // namespace xfm
