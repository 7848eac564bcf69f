#include "dct4/flows.h"

#include <functional>
#include <numeric>
#include <span>

#include "generator/check.h"

namespace xfm::dct4 {

namespace {

using Loop = Network::Loop;
using Part = std::span<const int>;  // splits that are still to be done

int length_of(Part splits) { return std::accumulate(splits.begin(), splits.end(), 2, std::multiplies<>()); }

// The part-transform of D[r + d' l]; its last element lies beyond the range of t and is the negative of the one a
// period before.
Sequence decimated(Network& net, const Sequence& d, int length, int radix, int r) {
  return [&net, d, length, radix, r](int l) {
    const bool last = l == length / radix / 2;
    return last && r > 0 ? net.negate(d(r - length / 2)) : d(r + radix * l);
  };
}

bool reflected(int h, int part_length) {  // bins that a split by four stores as conjugates
  return h / (part_length / 8) % 2 == 1;
}

// Who conjugates the reflected bins of a split by four: the split itself, or the one around it, which gets them as they
// are and folds each conjugation into its constants and sums. The second form saves a change of sign at every h.
enum class Conjugations { Own, OfParts, Left };

// A rotation of a value whose imaginary part is held negated: that sign goes into the constants. At r = 3 the result is
// negated as a whole, which keeps a negative cosine positive.
Complex rotate_conjugate(Network& net, Complex a, int r, int num, int den) {
  const Real c = cos_turn(num, den), s = sin_turn(num, den);
  if (r == 1) return {net.add(net.mul(a.re, c), net.mul(a.im, s)), net.sub(net.mul(a.re, s), net.mul(a.im, c))};
  if (r == 2) return {net.add(net.mul(a.re, c), net.mul(a.im, s)), net.add(net.mul(a.re, s), net.mul(a.im, -c))};
  const Value re = net.sub(net.mul(a.re, -c), net.mul(a.im, s)), im = net.mul(a.re, -s);
  return {re, c > 0 ? net.add(im, net.mul(a.im, c)) : net.sub(im, net.mul(a.im, -c))};
}

void split_by_two(Network& net, int length, const std::vector<std::vector<Complex>>& s, std::vector<Complex>& z) {
  const int m2 = length / 2;
  for (int h = 0; h < m2 / 2; ++h) {
    const Loop bin(net, "bin", h);
    const Complex t = net.rotate(s[1][h], 2 * h + 1, 2 * length);
    z[h] = net.add(s[0][h], t);
    z[m2 - 1 - h] = net.conjugate(net.sub(s[0][h], t));
  }
}

void split_by_four(Network& net, int length, const std::vector<std::vector<Complex>>& s, std::vector<Complex>& z,
                   Conjugations conjugations) {
  const int m2 = length / 4;
  const bool left = conjugations == Conjugations::Left;
  for (int h = 0; h < m2 / 2; ++h) {
    const Loop bin(net, "bin", h);
    const bool pending = conjugations == Conjugations::OfParts && reflected(h, m2);
    std::vector<Complex> t = {s[0][h]};
    for (int r = 1; r < 4; ++r) {
      const Loop rotation(net, "rotation", r);
      t.push_back(pending ? rotate_conjugate(net, s[r][h], r, r * (2 * h + 1), 2 * length)
                          : net.rotate(s[r][h], r * (2 * h + 1), 2 * length));
    }
    const Complex even = net.add(t[0], t[2]), even_less = net.sub(t[0], t[2]);
    const Complex odd = pending ? net.sub(t[1], t[3]) : net.add(t[1], t[3]);
    const Complex turned = net.quarter(pending ? net.add(t[1], t[3]) : net.sub(t[1], t[3]));
    z[h] = net.add(even, odd);
    z[h + m2] = net.add(even_less, turned);
    Complex f3 = net.sub(even_less, turned), f2 = net.sub(even, odd);
    if (pending)
      f3.im = net.sub(turned.im, even_less.im);
    else if (!left)
      f3 = net.conjugate(f3);
    z[m2 - 1 - h] = f3;
    z[2 * m2 - 1 - h] = left ? f2 : net.conjugate(f2);
  }
}

std::vector<Complex> forward_bins(Network& net, Part splits, const Sequence& d, Conjugations conjugations) {
  if (splits.empty()) return {{d(0), d(1)}};
  const int radix = splits[0], length = length_of(splits);
  std::vector<std::vector<Complex>> s;
  for (int r = 0; r < radix; ++r) {
    const Loop loop(net, "part", r);
    const Conjugations part = conjugations == Conjugations::OfParts && r > 0 ? Conjugations::Left : Conjugations::Own;
    s.push_back(forward_bins(net, splits.subspan(1), decimated(net, d, length, radix, r), part));
  }
  std::vector<Complex> z(length / 2);
  if (radix == 2)
    split_by_two(net, length, s, z);
  else
    split_by_four(net, length, s, z, conjugations);
  return z;
}

// The groups of a synthesis before its parts: E[r][h].
std::vector<std::vector<Complex>> synthesis_groups(Network& net, int length, int radix,
                                                   const std::vector<Complex>& t) {
  const int m2 = length / radix;
  std::vector<std::vector<Complex>> e(radix, std::vector<Complex>(m2 / 2));
  for (int h = 0; h < m2 / 2; ++h) {
    const Loop bin(net, "bin", h);
    std::vector<Complex> a(radix), g(radix);
    for (int f = 0; f < radix / 2; ++f) a[f] = t[h + m2 * f];
    for (int f = 1; f <= radix / 2; ++f) a[radix - f] = net.conjugate(t[m2 * f - 1 - h]);
    if (radix == 2) {
      g = {net.add(a[0], a[1]), net.sub(a[0], a[1])};
    } else {
      const Complex even = net.add(a[0], a[2]), even_less = net.sub(a[0], a[2]);
      const Complex odd = net.add(a[1], a[3]), odd_less = net.sub(a[1], a[3]);
      g = {net.add(even, odd),
           {net.sub(even_less.re, odd_less.im), net.add(even_less.im, odd_less.re)},
           net.sub(even, odd),
           {net.add(even_less.re, odd_less.im), net.sub(even_less.im, odd_less.re)}};
    }
    e[0][h] = g[0];
    for (int r = 1; r < radix; ++r) {
      const Loop rotation(net, "rotation", r);
      e[r][h] = net.rotate(g[r], r * (2 * h + 1), 2 * length);
    }
  }
  return e;
}

std::vector<Value> synthesis_of(Network& net, Part splits, const std::vector<Complex>& t) {
  // Y(1) = -Im T, and Y(-1) = -Y(1) because Y is anti-periodic.
  if (splits.empty()) return {net.negate(net.negate(t[0].im)), t[0].re};
  const int radix = splits[0], length = length_of(splits);
  const auto e = synthesis_groups(net, length, radix, t);
  std::vector<Value> y(length);
  for (int r = 0; r < radix; ++r) {
    const Loop loop(net, "part", r);
    const std::vector<Value> part = synthesis_of(net, splits.subspan(1), e[r]);
    for (size_t l = 0; l < part.size(); ++l) y[r + radix * l] = part[l];
  }
  return y;
}

std::vector<Complex> dft4(Network& net, const std::vector<Complex>& t) {
  const Complex even = net.add(t[0], t[2]), even_less = net.sub(t[0], t[2]);
  const Complex odd = net.add(t[1], t[3]), turned = net.quarter(net.sub(t[1], t[3]));
  return {net.add(even, odd), net.add(even_less, turned), net.sub(even, odd), net.sub(even_less, turned)};
}

// As dft4, with the odd legs turned before they are joined.
std::vector<Complex> dft4_turned_legs(Network& net, const std::vector<Complex>& t) {
  const Complex even = net.add(t[0], t[2]), even_less = net.sub(t[0], t[2]);
  const Complex odd = net.add(t[1], t[3]);
  const Complex turned = net.add(net.quarter(t[1]), {t[3].im, net.negate(t[3].re)});
  return {net.add(even, odd), net.add(even_less, turned), net.sub(even, odd), net.sub(even_less, turned)};
}

std::vector<Complex> dft8(Network& net, const std::vector<Complex>& t) {
  const std::vector<Complex> even = dft4_turned_legs(net, {t[0], t[2], t[4], t[6]});
  std::vector<Complex> odd = dft4_turned_legs(net, {t[1], t[3], t[5], t[7]});
  const Real root = cos_turn(1, 8);
  odd[1] = net.rotate(odd[1], 1, 8);
  odd[2] = net.quarter(odd[2]);
  odd[3] = {net.mul(net.add(odd[3].re, odd[3].im), -root), net.mul(net.sub(odd[3].re, odd[3].im), root)};
  std::vector<Complex> out(8);
  for (int f = 0; f < 4; ++f) {
    out[f] = net.add(even[f], odd[f]);
    out[f + 4] = net.sub(even[f], odd[f]);
  }
  return out;
}

std::vector<Complex> dft(Network& net, const std::vector<Complex>& t) {
  check(t.size() == 4 || t.size() == 8, "a complex DFT has 4 or 8 points");
  return t.size() == 4 ? dft4(net, t) : dft8(net, t);
}

}  // namespace

std::vector<Complex> forward(Network& net, const Splits& splits, const Sequence& d, bool fold_parts) {
  return forward_bins(net, splits, d, fold_parts ? Conjugations::OfParts : Conjugations::Own);
}

std::vector<Value> synthesis(Network& net, const Splits& splits, const std::vector<Complex>& t) {
  return synthesis_of(net, splits, t);
}

std::vector<Complex> combine(Network& net, const Splits& splits, const std::vector<Complex>& s, const Rotation& rotation) {
  const auto turned = [&](Complex value, int section, int entry) {
    const Complex w = rotation(section, entry);
    return net.rotate(value, w.re, w.im);
  };
  const int e = splits[0], legs = static_cast<int>(s.size()) / e;
  check(splits.size() == (legs == 1 ? 1 : 2) && (legs == 1 || legs == 4), "a combining step has one DFT, or DFTs and those of four");
  std::vector<std::vector<Complex>> u;
  for (int b = 0; b < legs; ++b) {
    std::vector<Complex> leg = {s[b]};
    for (int a = 1; a < e; ++a) leg.push_back(turned(s[b + legs * a], 0, a - 1));
    u.push_back(dft(net, leg));
  }
  if (legs == 1) return u[0];
  std::vector<Complex> f(s.size());
  for (int j = 0; j < e; ++j) {
    std::vector<Complex> leg = {u[0][j]};
    for (int b = 1; b < legs; ++b) leg.push_back(turned(u[b][j], 1, 3 * j + b - 1));
    const std::vector<Complex> out = dft(net, leg);
    for (int q = 0; q < legs; ++q) f[j + e * q] = out[q];
  }
  return f;
}

}  // namespace xfm::dct4
