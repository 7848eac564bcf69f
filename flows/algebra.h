// Two kinds of complex value over an expression graph, with the same operations, so that a block is written once.
//
// `Physical`: a reference is a complex value of the data; a quarter turn is free.
// `Formal`: a pair of references, the real and the imaginary part of a bin of real-input transforms that run on both
// components of the data alike; a quarter turn exchanges the two.
#pragma once

#include <vector>

#include "generator/graph.h"

namespace xfm {

struct Physical {
  using Value = Ref;
  Graph& g;

  Ref add(Ref a, Ref b) const { return g.add(a, b); }
  Ref sub(Ref a, Ref b) const { return g.sub(a, b); }
  Ref turned(Ref a, int quarters) const { return a.turned(quarters); }
  Ref times(Ref a, const Coef& c, const Coef& s) const { return g.lin({{c, a}, {s, a.turned(1)}}); }
  // By an odd number of eighth turns: sqrt(1/2) times the sum and the difference of the components.
  Ref eighths(Ref a, int odd) const {
    const Ref sum = g.add(a, a.turned(odd % 4 == 1 ? 1 : 3));
    return g.scale(odd == 1 || odd == 7 ? square_root(Real(0.5)) : -square_root(Real(0.5)), sum);
  }
  // A function of single references applied to both components of complex values.
  template <class F>
  std::vector<Ref> lanewise(const std::vector<Ref>& x, F f) const {
    return f(x);
  }
};

struct Formal {
  struct Value {
    Ref re, im;
    explicit operator bool() const { return bool(re) || bool(im); }
  };
  Graph& g;

  Value add(Value a, Value b) const { return {g.add(a.re, b.re), g.add(a.im, b.im)}; }
  Value sub(Value a, Value b) const { return {g.sub(a.re, b.re), g.sub(a.im, b.im)}; }
  Value turned(Value a, int quarters) const {
    switch (quarters & 3) {
      case 1: return {-a.im, a.re};
      case 2: return {-a.re, -a.im};
      case 3: return {a.im, -a.re};
      default: return a;
    }
  }
  Value times(Value a, const Coef& c, const Coef& s) const {
    return {g.lin({{c, a.re}, {-s, a.im}}), g.lin({{s, a.re}, {c, a.im}})};
  }
  Value eighths(Value a, int odd) const {
    const Value sum = add(a, turned(a, 1));
    const Real c = square_root(Real(0.5));
    return turned({g.scale(c, sum.re), g.scale(c, sum.im)}, odd / 2);
  }
  template <class F>
  std::vector<Value> lanewise(const std::vector<Value>& x, F f) const {
    std::vector<Ref> re, im;
    for (const Value& v : x) re.push_back(v.re), im.push_back(v.im);
    const std::vector<Ref> fr = f(re), fi = f(im);
    std::vector<Value> out;
    for (size_t i = 0; i < fr.size(); ++i) out.push_back({fr[i], fi[i]});
    return out;
  }
};

// a * exp(2*pi*i*num/den): free for quarter turns, two products after a sum and a difference for odd eighths, else four.
template <class A>
typename A::Value twiddled(const A& alg, typename A::Value a, long long num, long long den) {
  num = ((num % den) + den) % den;
  if (4 * num % den == 0) return alg.turned(a, static_cast<int>(4 * num / den));
  if (8 * num % den == 0) return alg.eighths(a, static_cast<int>(8 * num / den));
  return alg.times(a, cos_turn(num, den), sin_turn(num, den));
}

}  // namespace xfm
