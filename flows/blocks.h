// Blocks of complex transforms: two- and four-point butterflies, direct and Rader forms of primes, and the plans that link
// them. `sign` is that of the exponent: -1 forward, +1 inverse.
//
// The prime forms are written over any complex value (see algebra.h). Which form a prime block takes inside a plan is
// data: the table of plans names it where it is not the default, direct up to 11 and real-lane above.
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "flows/algebra.h"
#include "flows/numbers.h"
#include "flows/plan.h"

namespace xfm {

enum class BlockForm { Direct, RealLane, RaderComplex };

// How a real sequence of a prime length is transformed: the plan of length p-1 of the first transform, and that of the
// second, read as a forward plan and run transposed.
struct LaneRecipe {
  Plan first, second;
  bool complex_middle_row = false;  // the row at half the sampling rate of a twiddled link is run as a complex one
};

struct Recipes {
  std::map<int, LaneRecipe> by_prime;           // blocks of one precision
  std::map<std::string, LaneRecipe> by_name;    // blocks inside those
  std::map<int, Plan> rader_inner;              // plan of length p-1 of Rader complex blocks
};

// The forms of one kernel's prime blocks; a block of the first stages may differ from the others.
struct BlockForms {
  struct Pair {
    BlockForm first_stage, other;
  };
  std::map<int, Pair> special;

  BlockForm of(int prime, bool first_stage) const {
    const auto found = special.find(prime);
    if (found != special.end()) return first_stage ? found->second.first_stage : found->second.other;
    return prime <= 11 ? BlockForm::Direct : BlockForm::RealLane;
  }
  bool differ() const {
    return std::any_of(special.begin(), special.end(), [](const auto& entry) { return entry.second.first_stage != entry.second.other; });
  }
  bool any(BlockForm form) const {
    return std::any_of(special.begin(), special.end(), [&](const auto& entry) {
      return entry.second.first_stage == form || entry.second.other == form;
    });
  }
};

// C[j] = (1/L) * sum over q of W^(g^-q) * exp(-2*pi*i*q*j/L), the constant spectrum of a Rader block (L = p-1,
// W = exp(sign*2*pi*i/p)). C[0] = -1/L exactly, and C[L/2] is real or imaginary.
struct ComplexNumber {
  Real re = 0, im = 0;
};
std::vector<ComplexNumber> rader_spectrum(int prime, int sign);

// y0, t[1..h], u[1..h] of the direct form for one component, h = (p-1)/2: y[j] = t[j] + sign*i*u[j].
std::vector<Ref> direct_parts(Graph& g, const std::vector<Ref>& x);

template <class A>
std::vector<typename A::Value> direct_block(const A& alg, const std::vector<typename A::Value>& x, int sign) {
  using Value = typename A::Value;
  const int p = static_cast<int>(x.size()), h = (p - 1) / 2;
  const std::vector<Value> parts = alg.lanewise(x, [&](const std::vector<Ref>& lane) { return direct_parts(alg.g, lane); });
  std::vector<Value> y(p);
  y[0] = parts[0];
  for (int j = 1; j <= h; ++j) {
    const Value t = parts[j], u = alg.turned(parts[h + j], sign);
    y[j] = alg.add(t, u);
    y[p - j] = alg.sub(t, u);
  }
  return y;
}

template <class A>
std::vector<typename A::Value> two_point(const A& alg, const std::vector<typename A::Value>& x) {
  return {alg.add(x[0], x[1]), alg.sub(x[0], x[1])};
}

template <class A>
std::vector<typename A::Value> four_point(const A& alg, const std::vector<typename A::Value>& x, int sign) {
  const auto s = alg.add(x[0], x[2]), d = alg.sub(x[0], x[2]);
  const auto e = alg.add(x[1], x[3]), f = alg.turned(alg.sub(x[1], x[3]), sign);
  return {alg.add(s, e), alg.add(d, f), alg.sub(s, e), alg.sub(d, f)};
}

// Where the points of a link stand: input of block b at its point a, and output k2 of block k1.
struct LinkMap {
  explicit LinkMap(const Plan& plan)
      : a(plan.first().length), b(plan.second().length), twiddles(plan.kind == Plan::Kind::CooleyTukey) {}
  int a, b;
  bool twiddles;
  int length() const { return a * b; }
  int input(int i, int j) const { return twiddles ? i * b + j : (b * i + a * j) % length(); }
  int output(int k1, int k2) const { return twiddles ? k1 + a * k2 : chinese_remainder(k1, a, k2, b); }
};

// A plan over complex values of either kind. `prime` makes the prime blocks: prime(plan, x, first_stage).
template <class A, class Prime>
std::vector<typename A::Value> planned(const A& alg, const Plan& plan, const std::vector<typename A::Value>& x, int sign,
                                       bool first_stage, const Prime& prime) {
  using Value = typename A::Value;
  if (!plan.link()) {
    if (plan.length == 2) return two_point(alg, x);
    if (plan.length == 4) return four_point(alg, x, sign);
    return prime(plan, x, first_stage);
  }
  const LinkMap map(plan);
  std::vector<std::vector<Value>> u(map.b);
  for (int j = 0; j < map.b; ++j) {
    std::vector<Value> in(map.a);
    for (int i = 0; i < map.a; ++i) in[i] = x[map.input(i, j)];
    u[j] = planned(alg, plan.first(), in, sign, first_stage, prime);
  }
  std::vector<Value> y(map.length());
  for (int k1 = 0; k1 < map.a; ++k1) {
    std::vector<Value> in(map.b);
    for (int j = 0; j < map.b; ++j)
      in[j] = map.twiddles ? twiddled(alg, u[j][k1], sign * j * k1, map.length()) : u[j][k1];
    const std::vector<Value> z = planned(alg, plan.second(), in, sign, first_stage && k1 == 0, prime);
    for (int k2 = 0; k2 < map.b; ++k2) y[map.output(k1, k2)] = z[k2];
  }
  return y;
}

// A plan over the data's own values (or vectors of them), with the kernel's forms of prime blocks.
std::vector<Ref> complex_block(Graph& g, const Recipes& recipes, const BlockForms& forms, const Plan& plan,
                               const std::vector<Ref>& x, int sign, bool first_stage);

}  // namespace xfm
