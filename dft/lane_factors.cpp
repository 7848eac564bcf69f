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

namespace {

// What a lane takes of the vectors made for all: the value itself, re * a, im * i*a, or the sum of both, which an odd eighth
// turn multiplies by sqrt(1/2) once more.
enum class Part { Value, Real, Imaginary, Sum };

// A coefficient for the lanes that need one; the others have that of the first such lane.
Coef coefficient(const std::vector<std::optional<Real>>& needed) {
  Real other = 1;
  for (auto c = needed.rbegin(); c != needed.rend(); ++c) other = c->value_or(other);
  std::vector<Real> lanes;
  for (const auto& c : needed) lanes.push_back(c.value_or(other));
  return Coef(std::move(lanes));
}

}  // namespace

std::vector<Ref> times_lanes(Graph& g, Ref a, const std::vector<std::optional<Factor>>& factors) {
  std::vector<Ref> out(factors.size());
  const auto first = std::ranges::find_if(factors, [](const auto& f) { return f.has_value(); });
  if (first == factors.end()) return out;
  if (std::ranges::all_of(factors, [&](const auto& f) { return !f || *f == **first; })) {
    const Ref product = (*first)->times(Physical{g}, a);
    for (size_t l = 0; l < out.size(); ++l)
      if (factors[l]) out[l] = product;
    return out;
  }
  std::vector<Part> parts(factors.size());
  std::vector<std::optional<Real>> re(factors.size()), im(factors.size()), last(factors.size());
  bool eighths = false;
  for (size_t l = 0; l < factors.size(); ++l) {
    if (!factors[l]) continue;
    const Factor& f = *factors[l];
    const bool eighth = f.kind == Factor::Kind::Eighths, falling = f.turns % 4 == 3;  // a - i*a
    const bool itself = f.kind == Factor::Kind::Turn && f.turns == 0;
    parts[l] = itself ? Part::Value : is_zero(f.c.im) ? Part::Real : is_zero(f.c.re) ? Part::Imaginary : Part::Sum;
    if (parts[l] == Part::Real || parts[l] == Part::Sum) re[l] = eighth ? Real(1) : f.c.re;
    if (parts[l] == Part::Imaginary || parts[l] == Part::Sum) im[l] = eighth ? Real(falling ? -1 : 1) : f.c.im;
    if (parts[l] == Part::Sum) last[l] = eighth ? (f.c.re < 0 ? -1 : 1) * square_root(Real(0.5)) : Real(1);
    eighths = eighths || eighth;
  }
  const Coef real = coefficient(re), imaginary = coefficient(im);
  Ref sum = g.lin({{real, a}, {imaginary, a.turned(1)}});
  if (eighths) sum = g.scale(coefficient(last), sum);
  for (size_t l = 0; l < out.size(); ++l) {
    if (!factors[l]) continue;
    switch (parts[l]) {
      case Part::Value: out[l] = a; break;
      case Part::Real: out[l] = g.scale(real, a); break;
      case Part::Imaginary: out[l] = g.scale(imaginary, a.turned(1)); break;
      case Part::Sum: out[l] = sum; break;
    }
  }
  return out;
}

}  // namespace xfm::dft
