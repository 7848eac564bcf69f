#include "flows/blocks.h"

namespace xfm {

std::optional<int> ComplexNumber::eighth_turns() const {
  for (int k = 0; k < 8; ++k)
    if (*this == root(k, 8)) return k;
  return {};
}

Pair Pairs::turned(Pair a, int quarters) const {
  switch (quarters & 3) {
    case 1: return {-a.im, a.re};
    case 2: return {-a.re, -a.im};
    case 3: return {a.im, -a.re};
    default: return a;
  }
}

// The sums of the parts are multiplied in complex kernels, where they are those of one rotation and the others quarter turns
// of it; in real kernels products come before the sum.
Pair Pairs::eighths(Pair a, int odd) const {
  const Real half_root = square_root(Real(0.5));
  const auto scaled = [&](Ref v) { return g.scale(half_root, v); };
  const int c = odd == 1 || odd == 7 ? 1 : -1, s = odd < 4 ? 1 : -1;
  const auto re = [&](Pair z) { return g.lin({{c, z.re}, {-s, z.im}}); };
  const auto im = [&](Pair z) { return g.lin({{c, z.im}, {s, z.re}}); };
  if (convention == Convention::Transposed)
    return parts([&] { return scaled(re(a)); }, [&] { return scaled(im(a)); });
  if (convention == Convention::Complex) a = add(a, turned(a, 1));
  const Pair products = parts([&] { return scaled(a.re); }, [&] { return scaled(a.im); });
  if (convention == Convention::Complex) return turned(products, odd / 2);
  return parts([&] { return re(products); }, [&] { return im(products); });
}

std::vector<ComplexNumber> RaderMap::spectrum(int sign) const {
  const int inverse_root = inverse_mod(root_, prime_);
  std::vector<ComplexNumber> spectrum(length);
  for (int j = 0; j < length; ++j) {
    ComplexNumber sum;
    int e = 1;
    for (int q = 0; q < length; ++q, e = e * inverse_root % prime_) {
      const long long den = static_cast<long long>(prime_) * length;
      const long long num = static_cast<long long>(sign) * e * length - static_cast<long long>(q) * j * prime_;
      sum.re += cos_turn(num, den);
      sum.im += sin_turn(num, den);
    }
    const auto part = [&](Real x) { return is_zero(x / length) ? Real(0) : x / length; };
    spectrum[j] = {part(sum.re), part(sum.im)};
  }
  return spectrum;
}

}  // namespace xfm
