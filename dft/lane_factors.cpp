#include "dft/lane_factors.h"

#include <algorithm>

namespace xfm::dft {

Factor Factor::root(long long num, long long den) {
  num = ((num % den) + den) % den;
  Factor f;
  f.c = {cos_turn(num, den), sin_turn(num, den)};
  f.kind = 4 * num % den == 0 ? Kind::Turn : 8 * num % den == 0 ? Kind::Eighths : Kind::General;
  if (f.kind != Kind::General) f.turns = static_cast<int>((f.kind == Kind::Turn ? 4 : 8) * num / den);
  return f;
}

Factor Factor::constant(const ComplexNumber& c) {
  Factor f;
  f.c = c;
  for (int turns = 0; turns < 4; ++turns)
    if (is_zero(c.re - cos_turn(turns, 4)) && is_zero(c.im - sin_turn(turns, 4))) return root(turns, 4);
  f.kind = Kind::General;
  return f;
}

Ref Factor::times(const Physical& alg, Ref a) const {
  switch (kind) {
    case Kind::Turn: return a.turned(turns);
    case Kind::Eighths: return alg.eighths(a, turns);
    case Kind::General: return alg.times(a, c.re, c.im);
  }
  return {};
}

bool operator==(const Factor& a, const Factor& b) { return is_zero(a.c.re - b.c.re) && is_zero(a.c.im - b.c.im); }

// The vectors re * a, im * i*a, their sum, and the sum times another constant are formed once for all lanes; each lane takes
// the one that is its product. A constant of 1 or -1 alone keeps a value.
std::vector<Ref> times_lanes(Graph& g, Ref a, const std::vector<std::optional<Factor>>& factors) {
  std::vector<Ref> out(factors.size());
  const Factor* first = nullptr;
  bool alike = true, eighths = false;
  for (const auto& f : factors) {
    if (!f) continue;
    if (!first) first = &*f;
    alike = alike && *f == *first;
    eighths = eighths || f->kind == Factor::Kind::Eighths;
  }
  if (!first) return out;
  if (alike) {
    const Ref product = first->times(Physical{g}, a);
    for (size_t l = 0; l < out.size(); ++l)
      if (factors[l]) out[l] = product;
    return out;
  }
  std::vector<Real> re, im, last;
  for (const auto& given : factors) {
    const Factor& f = given ? *given : *first;
    const bool eighth = f.kind == Factor::Kind::Eighths;
    const bool falling = f.turns % 4 == 3;  // a - i*a
    re.push_back(eighth ? Real(1) : f.c.re);
    im.push_back(eighth ? Real(falling ? -1 : 1) : f.c.im);
    last.push_back(eighth ? (f.c.re < 0 ? -1 : 1) * square_root(Real(0.5)) : Real(1));
  }
  const Ref real = g.scale(Coef(re), a), imaginary = g.scale(Coef(im), a.turned(1));
  Ref sum = g.lin({{Coef(re), a}, {Coef(im), a.turned(1)}});
  if (eighths) sum = g.scale(Coef(last), sum);
  for (size_t l = 0; l < out.size(); ++l) {
    if (!factors[l]) continue;
    const Factor& f = *factors[l];
    out[l] = f.kind == Factor::Kind::Turn && f.turns == 0 ? a : is_zero(f.c.im) ? real : is_zero(f.c.re) ? imaginary : sum;
  }
  return out;
}

}  // namespace xfm::dft
