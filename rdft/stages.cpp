#include "rdft/stages.h"

#include "flows/numbers.h"
#include "generator/check.h"

namespace xfm::rdft {

namespace {

using Loop = Graph::Loop;

const Real kHalfRoot = square_root(Real(0.5));

// Files a bin under its index or, as conjugate, under that of its mirror image.
void put(Bins& bins, long long index, int n, Complex z) {
  const int k = residue(index, n);
  if (2 * k > n) {
    bins[n - k] = z.conj();
  } else {
    bins[k] = z;
  }
}

HalfSpectrum half_spectrum(const Bins& bins, int n) {
  HalfSpectrum out;
  for (int k = 0; k <= n / 2; ++k) {
    check(bins.contains(k), "bin " + std::to_string(k) + " of " + std::to_string(n) + " was not formed");
    out.push_back(bins.at(k));
  }
  return out;
}

template <class T>
std::vector<T> every(std::span<const T> x, int start, int step) {
  std::vector<T> out;
  for (size_t i = start; i < x.size(); i += step) out.push_back(x[i]);
  return out;
}

}  // namespace

HalfSpectrum Stages::real(const Plan& plan, std::span<const Ref> x) {
  check(static_cast<int>(x.size()) == plan.length, "a stage takes as many values as its length");
  const int n = plan.length;
  return std::visit(Overloaded{[&](const Direct&) { return pairs(n, x); },
                               [&](const PowerOfTwo& p) { return power_of_two(n, p.split, x); },
                               [&](const Twiddled& p) { return twiddled(p, n, x); },
                               [&](const GoodThomas& p) { return good_thomas(p, n, x); },
                               [&](const Lanes& p) { return real(*p.plan, x); },
                               [&](const Halves& p) { return halves(p, n, x); },
                               [&](const Rader& p) { return rader(p, n, x); }},
                    plan.form);
}

// u_j = x_j + x_(p-j), v_j = x_j - x_(p-j): every bin straight from its definition.
HalfSpectrum Stages::pairs(int p, std::span<const Ref> x) {
  const int half = (p - 1) / 2;
  std::vector<Ref> u, v;
  for (int j = 1; j <= half; ++j) {
    const Loop pair(g_, "pair", j);
    u.push_back(g_.add(x[j], x[p - j]));
    v.push_back(g_.sub(x[j], x[p - j]));
  }
  Ref sum = u[0];
  for (int j = 1; j < half; ++j) sum = g_.add(sum, u[j]);
  HalfSpectrum out{{g_.add(sum, x[0]), {}}};
  for (int k = 1; k <= half; ++k) {
    const Loop bin(g_, "bin", k);
    std::vector<Term> re{{1, x[0]}}, im;
    for (int j = 1; j <= half; ++j) {
      re.push_back({cos_turn(j * k, p), u[j - 1]});
      im.push_back({-sin_turn(j * k, p), v[j - 1]});
    }
    out.push_back({g_.lin(re), g_.lin(im)});
  }
  return out;
}

Complex Stages::rotate_eighth(Complex z, int cos_sign, int sin_sign) {
  const auto re = [&](Complex v) { return g_.lin({{cos_sign, v.re}, {sin_sign, v.im}}); };
  const auto im = [&](Complex v) { return g_.lin({{cos_sign, v.im}, {-sin_sign, v.re}}); };
  const auto scaled = [&](Ref v) { return g_.scale(kHalfRoot, v); };
  if (run_ == Run::Transposed) return parts([&] { return scaled(re(z)); }, [&] { return scaled(im(z)); });
  const Complex products = parts([&] { return scaled(z.re); }, [&] { return scaled(z.im); });
  return parts([&] { return re(products); }, [&] { return im(products); });
}

Complex Stages::rotate(Complex z, long long num, long long den, int iteration) {
  const Real c = cos_turn(num, den), s = sin_turn(num, den);
  if (is_zero(s)) return c > 0 ? z : -z;
  if (is_zero(c)) return s > 0 ? Complex{z.im, -z.re} : Complex{-z.im, z.re};
  const Loop rotation(g_, "rotation", iteration);
  if (z.im && is_zero(magnitude(c) - magnitude(s))) return rotate_eighth(z, c > 0 ? 1 : -1, s > 0 ? 1 : -1);
  return parts([&] { return g_.lin({{c, z.re}, {s, z.im}}); }, [&] { return g_.lin({{c, z.im}, {-s, z.re}}); });
}

std::vector<Complex> Stages::complex(const Plan& plan, std::span<const Complex> z) {
  check(static_cast<int>(z.size()) == plan.length, "a stage takes as many values as its length");
  if (const auto* stages = std::get_if<Twiddled>(&plan.form)) return complex_twiddled(*stages, plan.length, z);
  if (const auto* lanes = std::get_if<Lanes>(&plan.form)) return complex_lanes(*lanes->plan, z);
  if (const auto* power = std::get_if<PowerOfTwo>(&plan.form)) {
    if (plan.length == 4) return complex_four(z);
    if (plan.length == 16 && power->split == Split::Mixed) return complex_sixteen(z);
  }
  return complex_lanes(plan, z);
}

// The real transforms A of the real parts and B of the imaginary parts, then X_k = A_k + i B_k.
std::vector<Complex> Stages::complex_lanes(const Plan& plan, std::span<const Complex> z) {
  const int n = plan.length;
  std::vector<Ref> re, im;
  for (Complex v : z) re.push_back(v.re), im.push_back(v.im);
  const auto part = [&](int index, std::span<const Ref> x) {
    const Loop loop(g_, "part", index);
    return real(plan, x);
  };
  const HalfSpectrum a = part(0, re), b = part(1, im);
  std::vector<Complex> out(n);
  for (int k = 0; k <= n / 2; ++k) {
    const Loop bin(g_, "bin", k);
    if (real_bin(k, n)) {
      out[k] = {a[k].re, b[k].re};
    } else {
      out[k] = {g_.sub(a[k].re, b[k].im), g_.add(b[k].re, a[k].im)};
      out[n - k] = {g_.add(a[k].re, b[k].im), g_.sub(b[k].re, a[k].im)};
    }
  }
  return out;
}

std::vector<Complex> Stages::complex_four(std::span<const Complex> z) {
  const Complex p = add(z[0], z[2]), m = sub(z[0], z[2]), r = add(z[1], z[3]), t = sub(z[1], z[3]);
  const Complex turned{t.im, -t.re};
  return {add(p, r), add(m, turned), sub(p, r), sub(m, turned)};
}

// 2 by 8 with rotations between: 28 products.
std::vector<Complex> Stages::complex_sixteen(std::span<const Complex> z) {
  std::vector<Complex> even, odd;
  for (int n = 0; n < 8; ++n) {
    const Loop element(g_, "element", n);
    even.push_back(add(z[n], z[n + 8]));
    odd.push_back(rotate(sub(z[n], z[n + 8]), n, 16, 0));
  }
  const Plan eight{8, PowerOfTwo{}};
  const auto half = [&](int index, std::span<const Complex> x) {
    const Loop loop(g_, "half", index);
    return complex(eight, x);
  };
  const std::vector<Complex> a = half(0, even), b = half(1, odd);
  std::vector<Complex> out(16);
  for (int k = 0; k < 8; ++k) out[2 * k] = a[k], out[2 * k + 1] = b[k];
  return out;
}

HalfSpectrum Stages::power_of_two(int n, Split split, std::span<const Ref> x) {
  if (n == 2) return {{g_.add(x[0], x[1]), {}}, {g_.sub(x[0], x[1]), {}}};
  std::vector<Ref> sum, difference;
  for (int i = 0; i < n / 2; ++i) {
    const Loop element(g_, "element", i);
    sum.push_back(g_.add(x[i], x[i + n / 2]));
    difference.push_back(g_.sub(x[i], x[i + n / 2]));
  }
  const HalfSpectrum even = within("even", [&] { return power_of_two(n / 2, split, sum); });
  Bins bins = within("odd", [&] { return odd_of_power(n, split, difference); });
  for (int k = 0; k <= n / 4; ++k) bins[2 * k] = even[k];
  return half_spectrum(bins, n);
}

// n = 8 works as two classes, the second rotated by pi/4; from 16 on the classes n mod r are odd transforms of order n/r
// whose bins are rotated and combined by complex r-point transforms.
Bins Stages::odd_of_power(int n, Split split, std::span<const Ref> d) {
  if (n == 2) return {{1, {d[0], {}}}};
  if (n == 4) return {{1, {d[0], -d[1]}}};
  Bins bins;
  if (n == 8) {
    const Ref t1 = g_.scale(kHalfRoot, d[1]), t3 = g_.scale(kHalfRoot, d[3]);
    const Ref re = g_.sub(t1, t3), im = g_.add(t1, t3);
    put(bins, 1, n, {g_.add(d[0], re), g_.lin({{-1, d[2]}, {-1, im}})});
    put(bins, 5, n, {g_.sub(d[0], re), g_.lin({{-1, d[2]}, {1, im}})});
    return bins;
  }
  int r = 4;
  if (split == Split::Mixed && n == 32) r = 8;
  if (split == Split::Mixed && n == 64) r = 2;
  const Plan across{r, PowerOfTwo{}};
  std::vector<Bins> classes;
  for (int j = 0; j < r; ++j) {
    const Loop loop(g_, "class", j);
    classes.push_back(odd_of_power(n / r, split, every(d, j, r)));
  }
  for (const auto& [m, unused] : classes[0]) {
    const Loop row(g_, "row", m);
    std::vector<Complex> z;
    for (int j = 0; j < r; ++j) z.push_back(rotate(classes[j].at(m), j * m, n, j));
    const std::vector<Complex> out = complex(across, z);
    for (int k = 0; k < r; ++k) put(bins, m + n / r * k, n, out[k]);
  }
  return bins;
}

// a-point transforms of the classes n mod b; bin m of class r rotated by exp(-2*pi*i*r*m/n); b-point transforms.
HalfSpectrum Stages::twiddled(const Twiddled& plan, int n, std::span<const Ref> x) {
  const int a = plan.first->length, b = plan.second->length;
  std::vector<HalfSpectrum> classes;
  std::vector<Ref> dc;
  for (int r = 0; r < b; ++r) {
    const Loop loop(g_, "class", r);
    classes.push_back(real(*plan.first, every(x, r, b)));
    dc.push_back(classes[r][0].re);
  }
  Bins bins;
  const HalfSpectrum zero = within("zero", [&] { return real(*plan.second, dc); });
  for (int k = 0; k <= b / 2; ++k) put(bins, a * k, n, zero[k]);
  for (int m = 1; m < (a + 1) / 2; ++m) {
    const Loop row(g_, "row", m);
    std::vector<Complex> z;
    for (int r = 0; r < b; ++r) z.push_back(rotate(classes[r][m], r * m, n, r));
    const std::vector<Complex> out = complex(*plan.second, z);
    for (int k = 0; k < b; ++k) put(bins, m + a * k, n, out[k]);
  }
  return half_spectrum(bins, n);
}

std::vector<Complex> Stages::complex_twiddled(const Twiddled& plan, int n, std::span<const Complex> z) {
  const int a = plan.first->length, b = plan.second->length;
  std::vector<std::vector<Complex>> classes;
  for (int r = 0; r < b; ++r) {
    const Loop loop(g_, "class", r);
    classes.push_back(complex(*plan.first, every(z, r, b)));
  }
  std::vector<Complex> out(n);
  for (int m = 0; m < a; ++m) {
    const int bin = 2 * m <= a ? m : m - a;  // the upper bins turn backwards, by the smaller angle
    const Loop loop(g_, "row", m);
    std::vector<Complex> row;
    for (int r = 0; r < b; ++r) row.push_back(rotate(classes[r][m], r * bin, n, r));
    row = complex(*plan.second, row);
    for (int k = 0; k < b; ++k) out[residue(bin + a * k, n)] = row[k];
  }
  return out;
}

// n = (b*n1 + a*n2) mod N: the bin of the first stage is k mod a, that of the second k mod b.
HalfSpectrum Stages::good_thomas(const GoodThomas& plan, int n, std::span<const Ref> x) {
  const int a = plan.first->length, b = plan.second->length;
  std::vector<HalfSpectrum> classes;
  for (int n2 = 0; n2 < b; ++n2) {
    std::vector<Ref> members;
    for (int n1 = 0; n1 < a; ++n1) members.push_back(x[(b * n1 * plan.w + a * n2 * plan.u) % n]);
    const Loop loop(g_, "class", n2);
    classes.push_back(real(*plan.first, members));
  }
  Bins bins;
  // Reading the elements in steps of w and the classes in steps of u multiplies the indices of the bins likewise.
  const int w_inverse = inverse_mod(plan.w, a), u_inverse = inverse_mod(plan.u, b);
  const auto index = [&](int k1, int k2) {
    return chinese_remainder(residue(k1 * w_inverse, a), a, residue(k2 * u_inverse, b), b);
  };
  for (int m = 0; m <= a / 2; ++m) {
    const Loop loop(g_, real_bin(m, a) ? "real row" : "row", m);
    if (real_bin(m, a)) {
      std::vector<Ref> row;
      for (const HalfSpectrum& c : classes) row.push_back(c[m].re);
      const HalfSpectrum out = real(*plan.second, row);
      for (int k = 0; k <= b / 2; ++k) put(bins, index(m, k), n, out[k]);
    } else {
      std::vector<Complex> row;
      for (const HalfSpectrum& c : classes) row.push_back(plan.conjugate ? c[m].conj() : c[m]);
      const std::vector<Complex> out = complex(*plan.complex_second, row);
      for (int k = 0; k < b; ++k) put(bins, index(plan.conjugate ? -m : m, k), n, out[k]);
    }
  }
  return half_spectrum(bins, n);
}

HalfSpectrum Stages::halves(const Halves& plan, int n, std::span<const Ref> x) {
  std::vector<Ref> sum, difference;
  for (int i = 0; i < n / 2; ++i) {
    const Loop element(g_, "element", i);
    sum.push_back(g_.add(x[i], x[i + n / 2]));
    difference.push_back(g_.sub(x[i], x[i + n / 2]));
  }
  const HalfSpectrum even = within("even", [&] { return real(*plan.even, sum); });
  Bins bins = within("odd", [&] { return odd(*plan.odd, difference); });
  for (int k = 0; k <= n / 4; ++k) put(bins, 2 * k, n, even[k]);
  return half_spectrum(bins, n);
}

Bins Stages::odd(const OddPlan& plan, std::span<const Ref> d) {
  check(static_cast<int>(2 * d.size()) == plan.length, "an odd stage takes half as many values as its length");
  const int n = plan.length;
  return std::visit(Overloaded{[&](const OddPower&) { return odd_of_power(n, Split::Fours, d); },
                               [&](const OddGoodThomas& p) { return odd_good_thomas(p, n, d); },
                               [&](const OddTwiddled& p) { return odd_twiddled(p, n, d); }},
                    plan.form);
}

Bins Stages::odd_good_thomas(const OddGoodThomas& plan, int n, std::span<const Ref> d) {
  const int a = plan.power, b = plan.second->length;
  const auto value = [&](int i) { return i % n < n / 2 ? d[i % n] : -d[i % n - n / 2]; };
  Bins bins;
  if (a == 2) {  // the sequence read at even indices is a real one of length b
    std::vector<Ref> members;
    for (int t = 0; t < b; ++t) members.push_back(value(2 * t));
    const HalfSpectrum out = real(*plan.second, members);
    for (int k = 0; k <= b / 2; ++k) put(bins, k % 2 ? k : k + b, n, out[k]);
    return bins;
  }
  std::vector<Bins> classes;
  for (int n2 = 0; n2 < b; ++n2) {
    std::vector<Ref> members;
    for (int n1 = 0; n1 < a / 2; ++n1) members.push_back(value(b * n1 + a * n2));
    const Loop loop(g_, "class", n2);
    classes.push_back(odd_of_power(a, Split::Fours, members));
  }
  for (const auto& [m, unused] : classes[0]) {
    const Loop loop(g_, "row", m);
    std::vector<Complex> row;
    for (const Bins& c : classes) row.push_back(c.at(m));
    const std::vector<Complex> out = complex(*plan.second, row);
    for (int k = 0; k < b; ++k) put(bins, chinese_remainder(m, a, k, b), n, out[k]);
  }
  return bins;
}

Bins Stages::odd_twiddled(const OddTwiddled& plan, int n, std::span<const Ref> d) {
  const int r = plan.second->length, order = plan.classes->length;
  std::vector<Bins> classes;
  for (int j = 0; j < r; ++j) {
    const Loop loop(g_, "class", j);
    classes.push_back(odd(*plan.classes, every(d, j, r)));
  }
  Bins bins;
  for (const auto& [m, unused] : classes[0]) {
    const Loop loop(g_, 2 * m == order ? "middle row" : "row", m);
    if (2 * m == order) {
      std::vector<Ref> middle;
      for (const Bins& c : classes) middle.push_back(c.at(m).re);
      for (const auto& [q, z] : odd(*plan.middle, middle)) put(bins, m * q, n, z);
      continue;
    }
    std::vector<Complex> row;
    for (int j = 0; j < r; ++j) row.push_back(rotate(classes[j].at(m), j * m, n, j));
    const std::vector<Complex> out = complex(*plan.second, row);
    for (int k = 0; k < r; ++k) put(bins, m + order * k, n, out[k]);
  }
  return bins;
}

}  // namespace xfm::rdft
