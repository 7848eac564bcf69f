#include "dft/lane_factors.h"

#include <algorithm>

namespace xfm::dft {

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

std::vector<Ref> times_lanes(Graph& g, Ref a, const std::vector<std::optional<ComplexNumber>>& factors) {
  std::vector<Ref> out(factors.size());
  const auto first = std::ranges::find_if(factors, [](const auto& f) { return f.has_value(); });
  if (first == factors.end()) return out;
  if (std::ranges::all_of(factors, [&](const auto& f) { return !f || *f == **first; })) {
    const Ref product = times(Physical{g}, a, **first);
    for (size_t l = 0; l < out.size(); ++l)
      if (factors[l]) out[l] = product;
    return out;
  }
  std::vector<Part> parts(factors.size());
  std::vector<std::optional<Real>> re(factors.size()), im(factors.size()), last(factors.size());
  bool eighths = false;
  for (size_t l = 0; l < factors.size(); ++l) {
    if (!factors[l]) continue;
    const ComplexNumber& c = *factors[l];
    const std::optional<int> turns = c.eighth_turns();
    const bool eighth = turns && *turns % 2 == 1, falling = eighth && *turns % 4 == 3;  // a - i*a
    parts[l] = turns == 0 ? Part::Value : is_zero(c.im) ? Part::Real : is_zero(c.re) ? Part::Imaginary : Part::Sum;
    if (parts[l] == Part::Real || parts[l] == Part::Sum) re[l] = eighth ? Real(1) : c.re;
    if (parts[l] == Part::Imaginary || parts[l] == Part::Sum) im[l] = eighth ? Real(falling ? -1 : 1) : c.im;
    if (parts[l] == Part::Sum) last[l] = eighth ? (c.re < 0 ? -1 : 1) * square_root(Real(0.5)) : Real(1);
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
