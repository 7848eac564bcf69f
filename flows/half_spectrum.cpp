#include "flows/half_spectrum.h"

#include "generator/check.h"
#include "generator/passes.h"

namespace xfm {

// Bins of a real sequence's transform, kept for 0..n/2; a bin above is kept as the conjugate of its mirror.
class HalfBins {
 public:
  explicit HalfBins(int n) : n_(n), bins_(n / 2 + 1) {}

  void put(long long index, Pair v) {
    int k = residue(index, n_);
    if (2 * k > n_) k = n_ - k, v = v.conj();
    if (!bins_[k]) bins_[k] = real_bin(k, n_) ? Pair{v.re, {}} : v;
  }
  // Those of a row of a link, or the first half of them, the first at a place of the row.
  void put(const LinkMap& map, int k1, const std::vector<Pair>& row, int first = 0) {
    for (int k2 = 0; k2 < static_cast<int>(row.size()); ++k2) put(map.output(k1, k2 + first), row[k2]);
  }
  Half take() { return std::move(bins_); }

 private:
  int n_;
  Half bins_;
};

namespace {

std::vector<Ref> with_zeros(std::span<const Ref> x) {
  std::vector<Ref> padded(x.begin(), x.end());
  padded.resize(2 * x.size());
  return padded;
}

std::vector<Ref> real_parts(const std::vector<Pair>& row) {
  std::vector<Ref> values;
  for (const Pair& v : row) values.push_back(v.re);
  return values;
}

}  // namespace

Half HalfSpectra::real(const Plan& plan, std::span<const Ref> x, Wanted wanted) {
  check(static_cast<int>(x.size()) == plan.length, "a stage takes as many values as its length");
  switch (plan.kind) {
    case Plan::Kind::Rows:
    case Plan::Kind::Apart: return real(plan.first(), x, wanted);
    case Plan::Kind::Halves: return halves(plan, x, wanted);
    case Plan::Kind::CooleyTukey:
    case Plan::Kind::GoodThomas: return linked(plan, x, wanted);
    case Plan::Kind::Rader: return rader(plan, x, -1);
    case Plan::Kind::Block: return block(plan, x, -1, wanted);
    case Plan::Kind::ComplexRader:
    case Plan::Kind::Chirp:
    case Plan::Kind::Turned: break;
  }
  check(false, "a plan of half spectra");
  return {};
}

Half HalfSpectra::with_sign(const Plan& plan, std::span<const Ref> x, int sign) {
  if (plan.kind == Plan::Kind::Rader) return rader(plan, x, sign);
  if (plan.kind == Plan::Kind::Block) return block(plan, x, sign, Wanted::All);
  Half bins = real(plan, x);
  if (sign > 0)
    for (Pair& bin : bins) bin = bin.conj();
  return bins;
}

std::vector<Pair> HalfSpectra::complex(const Plan& plan, std::span<const Pair> z) {
  const auto apart = [&](const Plan& block, std::span<const Pair> in) {
    return joined<Pairs>(pairs_, in, [&](std::span<const Ref> x) { return real(block, x); });
  };
  return planned<Pairs>(pairs_, plan.in_complex_rows(), z, -1, apart);
}

Half HalfSpectra::block(const Plan& plan, std::span<const Ref> x, int sign, Wanted wanted) {
  if (plan.length == 2) return {{g_.add(x[0], x[1]), {}}, {g_.sub(x[0], x[1]), {}}};
  if (plan.length == 4) {
    const Ref s = g_.add(x[0], x[2]), d = g_.sub(x[0], x[2]), e = g_.add(x[1], x[3]), f = g_.sub(x[1], x[3]);
    const Pair bin{d, sign < 0 ? -f : f};
    if (wanted == Wanted::Odd) return {{}, bin, {}};
    return {{g_.add(s, e), {}}, bin, {g_.sub(s, e), {}}};
  }
  if (plan.length == 8) return halves({Plan::Kind::Halves, 8, {{Plan::Kind::Block, 4}, plan}}, x, wanted);
  return direct(x, sign);
}

// Of the differences d of the halves of eight points the bins 1 and 5: d[0] +- h*(d[1]-d[3]), -d[2] -+ h*(d[1]+d[3]).
Half HalfSpectra::odd_of_eight(std::span<const Ref> d) {
  const Real h = square_root(Real(0.5));
  const Ref t1 = g_.scale(h, d[1]), t3 = g_.scale(h, d[3]);
  const Ref re = g_.sub(t1, t3), im = g_.add(t1, t3);
  HalfBins bins(8);
  bins.put(1, {g_.add(d[0], re), g_.lin({{-1, d[2]}, {-1, im}})});
  bins.put(5, {g_.sub(d[0], re), g_.lin({{-1, d[2]}, {1, im}})});
  return bins.take();
}

// Every bin straight from its definition: cosines times x[m] + x[p-m], sines times x[m] - x[p-m]. In real kernels x[0] is added
// to bin 0 last, and the signs of sines stand in the sum, not before it.
Half HalfSpectra::direct(std::span<const Ref> x, int sign) {
  const int p = static_cast<int>(x.size()), h = p / 2;
  const bool complex_kernel = for_complex_kernel();
  std::vector<Ref> u(h + 1), v(h + 1);
  std::vector<Term> dc;
  if (complex_kernel) dc.push_back({1, x[0]});
  for (int m = 1; m <= h; ++m) {
    const Graph::Loop pair(g_, "pair", m);
    u[m] = g_.add(x[m], x[p - m]);
    v[m] = g_.sub(x[m], x[p - m]);
    dc.push_back({1, u[m]});
  }
  if (!complex_kernel) dc.push_back({1, x[0]});
  Half bins{{g_.lin(dc), {}}};
  for (int k = 1; k <= h; ++k) {
    const Graph::Loop bin(g_, "bin", k);
    std::vector<Term> re{{1, x[0]}}, im;
    for (int m = 1; m <= h; ++m) {
      re.push_back({cos_turn(k * m, p), u[m]});
      im.push_back({(complex_kernel ? 1 : sign) * sin_turn(k * m, p), v[m]});
    }
    const Ref cosines = g_.lin(re), sines = g_.lin(im);
    bins.push_back({cosines, complex_kernel && sign < 0 ? -sines : sines});
  }
  return bins;
}

Half HalfSpectra::halves(const Plan& plan, std::span<const Ref> x, Wanted wanted) {
  const int m = plan.length / 2;
  std::vector<Ref> sums, differences;
  for (int i = 0; i < m; ++i) {
    const Graph::Loop element(g_, "element", i);
    sums.push_back(g_.add(x[i], x[i + m]));
    differences.push_back(g_.sub(x[i], x[i + m]));
  }
  HalfBins bins(plan.length);
  if (wanted == Wanted::All) {
    const Half even = within("even", [&] { return real(plan.first(), sums); });
    for (int k = 0; k <= m / 2; ++k) bins.put(2 * k, even[k]);
  }
  const Half odd = within("odd", [&] {
    const bool eight = plan.second().kind == Plan::Kind::Block && plan.length == 8;
    return eight ? odd_of_eight(differences) : real(plan.second(), with_zeros(differences), Wanted::Odd);
  });
  for (int k = 1; k <= m; k += 2) bins.put(k, odd[k]);
  return bins.take();
}

Half HalfSpectra::linked(const Plan& plan, std::span<const Ref> x, Wanted wanted) {
  const LinkMap map(plan);
  if (map.a % 2 == 1 || for_complex_kernel()) wanted = Wanted::All;  // the parity of a bin is that of its row for even a only
  std::vector<Half> u;
  for (const std::vector<Ref>& in : map.classes(x)) {
    const Graph::Loop loop(g_, "class", static_cast<int>(u.size()));
    u.push_back(real(plan.first(), in, wanted));
  }
  HalfBins bins(plan.length);
  for (int k1 = wanted == Wanted::Odd; k1 <= map.a / 2; k1 += wanted == Wanted::Odd ? 2 : 1) {
    const bool real_row = real_bin(k1, map.a), middle = real_row && map.twiddles && k1 > 0;
    const Graph::Loop loop(g_, !real_row ? "row" : !map.twiddles ? "real row" : middle ? "middle row" : "zero", k1);
    std::vector<Pair> row;
    for (const Half& h : u) row.push_back(plan.numbering.conjugate ? h[k1].conj() : h[k1]);
    if (middle) {
      middle_row(plan.second(), row, map, bins);
    } else if (real_row) {
      bins.put(map, k1, real(plan.second(), real_parts(row)));
    } else {
      rotated_row(plan.second(), row, plan.numbering.conjugate ? -k1 : k1, map, bins);
    }
  }
  return bins.take();
}

void HalfSpectra::rotated_row(const Plan& second, std::vector<Pair> row, int k1, const LinkMap& map, HalfBins& bins) {
  for (int j = 0; j < map.b; ++j) {
    const Graph::Loop rotation(g_, "rotation", j);
    row[j] = times(pairs_, row[j], map.twiddle(-1, j, k1));
  }
  bins.put(map, k1, complex(second, row));
}

// The row at half the sampling rate of a twiddled link is real times exp(-i*pi*j/b). For odd b that is a real transform of
// the row with alternating signs, its bins moved by (b-1)/2.
void HalfSpectra::middle_row(const Plan& second, const std::vector<Pair>& row, const LinkMap& map, HalfBins& bins) {
  const int k1 = map.a / 2;
  const bool stated = second.kind == Plan::Kind::Rows && second.parts.size() == 3;
  std::vector<Ref> values = real_parts(row);
  if (stated && second.parts[2].kind != Plan::Kind::Turned) {
    const Half z = real(second.parts[2], with_zeros(values), Wanted::Odd);
    for (int q = 1; q <= map.b; q += 2) bins.put(k1 * q, z[q]);
  } else if (stated || map.b % 2 == 0) {
    rotated_row(second, row, k1, map, bins);
  } else {
    for (int j = 1; j < map.b; j += 2) values[j] = -values[j];
    bins.put(map, k1, real(second, values), (map.b - 1) / 2);
  }
}

// The even or the odd part of the real sequence with these bins: the forward network of such bins, transposed. In real
// kernels the transpose takes its signs from the network alone, not from the values it is fed with: it is made apart first.
std::vector<Ref> HalfSpectra::second_transform(const Plan& plan, const Half& spectrum, Wanted wanted) {
  const int m = static_cast<int>(spectrum.size()) - 1;
  const auto input = [&](Graph& g, int i) { return g.input(std::vector<int>(g.lanes(), i)); };
  Graph network(g_.lanes()), transposed(g_.lanes());
  std::vector<Ref> in;
  std::vector<int> ends;
  for (int i = 0; i < m; ++i) in.push_back(input(network, i)), ends.push_back(in.back().node);

  HalfSpectra flow(network, xfm::transposed(pairs_.convention));
  const bool even_half = wanted == Wanted::All && plan.kind == Plan::Kind::Halves;
  const Half bins = even_half ? flow.real(plan.first(), in) : flow.real(plan, with_zeros(in), wanted);
  std::vector<Ref> outputs, feed, placeholders;
  for (int k = wanted == Wanted::Odd; k <= m; k += 2) {
    const Pair& bin = bins[even_half ? k / 2 : k];
    outputs.push_back(bin.re), feed.push_back(spectrum[k].re);
    if (bin.im) outputs.push_back(bin.im), feed.push_back(spectrum[k].im);
  }
  for (size_t i = 0; i < feed.size(); ++i) placeholders.push_back(input(transposed, static_cast<int>(i)));
  if (for_complex_kernel()) return transpose(network, ends, outputs, g_, feed);
  return placed(transposed, transpose(network, ends, outputs, transposed, placeholders), g_, feed);
}

// The constant spectrum of Rader's method is real at even and imaginary at odd bins, because g^(L/2) = -1 cancels the other
// parts: taken times -i at odd bins it keeps both halves real combinations of the input. So the way back needs no transform of
// length L: the even bins give the real parts and the odd ones the imaginary parts, each through the transposed network of
// those bins.
Half HalfSpectra::rader(const Plan& plan, std::span<const Ref> x, int sign) {
  const RaderMap map(plan);
  const int half = map.length / 2;
  const Half bins = within("first", [&] { return real(plan.first(), map.sequence(x)); });

  HalfBins out(plan.length);
  out.put(0, {g_.add(x[0], bins[0].re), {}});
  const std::vector<ComplexNumber> spectrum = map.spectrum(sign);
  Half product(1);
  for (int j = 1; j <= half; ++j) {
    const Graph::Loop loop(g_, "product", j);
    const ComplexNumber c = j % 2 ? ComplexNumber{spectrum[j].im, -spectrum[j].re} : spectrum[j];
    product.push_back(j == half ? Pair{g_.scale(c.re, bins[j].re), {}} : pairs_.times(bins[j], {2 * c.re, 2 * c.im}));
  }
  product[0].re = g_.lin({{1, x[0]}, {spectrum[0].re, bins[0].re}});
  const std::vector<Ref> re = within("even", [&] { return second_transform(plan.second(), product, Wanted::All); });
  const std::vector<Ref> im = within("odd", [&] { return second_transform(plan.second(), product, Wanted::Odd); });
  for (int q = 0; q < half; ++q) out.put(map.output(q), {re[q], im[q]});
  return out.take();
}

}  // namespace xfm
