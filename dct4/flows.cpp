#include "dct4/flows.h"

#include <algorithm>

#include "generator/check.h"

namespace xfm {

namespace {

int forward_split(int length) { return length == 16 || length == 64 ? 4 : 2; }

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

std::vector<Complex> forward_bins(Network& net, int length, const Sequence& d, bool leave_conjugates);

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
    const Complex t = net.rotate(s[1][h], 2 * h + 1, 2 * length);
    z[h] = net.add(s[0][h], t);
    z[m2 - 1 - h] = net.conjugate(net.sub(s[0][h], t));
  }
}

// Length 64 takes the bins of its parts before their conjugation, but for r = 0, and then folds one of its own
// conjugations into a difference, so that every h costs three changes of sign.
void split_by_four(Network& net, int length, const std::vector<std::vector<Complex>>& s, std::vector<Complex>& z,
                   bool leave_conjugates) {
  const int m2 = length / 4;
  for (int h = 0; h < m2 / 2; ++h) {
    const bool pending = length == 64 && reflected(h, m2);
    std::vector<Complex> t = {s[0][h]};
    for (int r = 1; r < 4; ++r)
      t.push_back(pending ? rotate_conjugate(net, s[r][h], r, r * (2 * h + 1), 2 * length)
                          : net.rotate(s[r][h], r * (2 * h + 1), 2 * length));
    const Complex even = net.add(t[0], t[2]), even_less = net.sub(t[0], t[2]);
    const Complex odd = pending ? net.sub(t[1], t[3]) : net.add(t[1], t[3]);
    const Complex turned = net.quarter(pending ? net.add(t[1], t[3]) : net.sub(t[1], t[3]));
    z[h] = net.add(even, odd);
    z[h + m2] = net.add(even_less, turned);
    Complex f3 = net.sub(even_less, turned), f2 = net.sub(even, odd);
    if (pending)
      f3.im = net.sub(turned.im, even_less.im);
    else if (!leave_conjugates)
      f3 = net.conjugate(f3);
    z[m2 - 1 - h] = f3;
    z[2 * m2 - 1 - h] = leave_conjugates ? f2 : net.conjugate(f2);
  }
}

std::vector<Complex> forward_bins(Network& net, int length, const Sequence& d, bool leave_conjugates) {
  if (length == 2) return {{d(0), d(1)}};
  const int radix = forward_split(length);
  std::vector<std::vector<Complex>> s;
  for (int r = 0; r < radix; ++r)
    s.push_back(forward_bins(net, length / radix, decimated(net, d, length, radix, r), length == 64 && r > 0));
  std::vector<Complex> z(length / 2);
  if (radix == 2)
    split_by_two(net, length, s, z);
  else
    split_by_four(net, length, s, z, leave_conjugates);
  return z;
}

std::vector<Value> synthesis_by(Network& net, int length, const std::vector<Complex>& t, bool within_64);

// The groups of a synthesis before its parts: E[r][h].
std::vector<std::vector<Complex>> synthesis_groups(Network& net, int length, int radix, const std::vector<Complex>& t) {
  const int m2 = length / radix;
  std::vector<std::vector<Complex>> e(radix, std::vector<Complex>(m2 / 2));
  for (int h = 0; h < m2 / 2; ++h) {
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
    for (int r = 1; r < radix; ++r) e[r][h] = net.rotate(g[r], r * (2 * h + 1), 2 * length);
  }
  return e;
}

std::vector<Value> synthesis_by(Network& net, int length, const std::vector<Complex>& t, bool within_64) {
  // Y(1) = -Im T, and Y(-1) = -Y(1) because Y is anti-periodic.
  if (length == 2) return {net.negate(net.negate(t[0].im)), t[0].re};
  const int radix = length == 64 || (length == 16 && within_64) ? 4 : 2;
  const auto e = synthesis_groups(net, length, radix, t);
  std::vector<Value> y(length);
  for (int r = 0; r < radix; ++r) {
    const std::vector<Value> part = synthesis_by(net, length / radix, e[r], within_64 || length == 64);
    for (size_t l = 0; l < part.size(); ++l) y[r + radix * l] = part[l];
  }
  return y;
}

}  // namespace

std::vector<Complex> forward(Network& net, int length, const Sequence& d) { return forward_bins(net, length, d, false); }

std::vector<Value> synthesis(Network& net, int length, const std::vector<Complex>& t) {
  return synthesis_by(net, length, t, false);
}

std::vector<Complex> dft4(Network& net, const std::vector<Complex>& t) {
  const Complex even = net.add(t[0], t[2]), even_less = net.sub(t[0], t[2]);
  const Complex odd = net.add(t[1], t[3]), turned = net.quarter(net.sub(t[1], t[3]));
  return {net.add(even, odd), net.add(even_less, turned), net.sub(even, odd), net.sub(even_less, turned)};
}

namespace {

// As dft4, with the odd legs turned before they are joined.
std::vector<Complex> dft4_turned_legs(Network& net, const std::vector<Complex>& t) {
  const Complex even = net.add(t[0], t[2]), even_less = net.sub(t[0], t[2]);
  const Complex odd = net.add(t[1], t[3]);
  const Complex turned = net.add(net.quarter(t[1]), {t[3].im, net.negate(t[3].re)});
  return {net.add(even, odd), net.add(even_less, turned), net.sub(even, odd), net.sub(even_less, turned)};
}

}  // namespace

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

std::vector<Complex> combine(Network& net, int radix, const std::vector<Complex>& s, const Rotation& rotation) {
  const auto turned = [&](Complex value, int section, int entry) {
    const Complex w = rotation(section, entry);
    return net.rotate(value, w.re, w.im);
  };
  if (radix == 8) {
    std::vector<Complex> t = {s[0]};
    for (int r = 1; r < 8; ++r) t.push_back(turned(s[r], 0, r - 1));
    return dft8(net, t);
  }
  check(radix == 16 || radix == 32, "a combining step has radix 8, 16 or 32");
  const int e = radix / 4;
  std::vector<std::vector<Complex>> u;
  for (int b = 0; b < 4; ++b) {
    std::vector<Complex> leg = {s[b]};
    for (int a = 1; a < e; ++a) leg.push_back(turned(s[b + 4 * a], 0, a - 1));
    u.push_back(e == 8 ? dft8(net, leg) : dft4(net, leg));
  }
  std::vector<Complex> f(radix);
  for (int j = 0; j < e; ++j) {
    std::vector<Complex> leg = {u[0][j]};
    for (int b = 1; b < 4; ++b) leg.push_back(turned(u[b][j], 1, 3 * j + b - 1));
    const std::vector<Complex> out = dft4(net, leg);
    for (int q = 0; q < 4; ++q) f[j + e * q] = out[q];
  }
  return f;
}

}  // namespace xfm
