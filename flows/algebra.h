// Two kinds of complex value over an expression graph, with the same operations, so that a block is written once.
//
// `Physical`: a reference is a complex value of the data; a quarter turn is free.
// `Formal`: a pair of references, the real and the imaginary part of a bin of real-input transforms that run on both
// components of the data alike; a quarter turn exchanges the two.
#pragma once

#include <vector>

#include "generator/graph.h"

namespace xfm {

// num/den of a full turn for every lane of a vector value.
struct Angles {
  std::vector<int> num;
  int den = 1;
};

struct Physical {
  using Value = Ref;
  Graph& g;

  Ref add(Ref a, Ref b) const { return g.add(a, b); }
  Ref sub(Ref a, Ref b) const { return g.sub(a, b); }
  Ref turned(Ref a, int quarters) const { return a.turned(quarters); }
  Ref times(Ref a, const Coef& c, const Coef& s) const { return g.lin({{c, a}, {s, a.turned(1)}}); }
  Ref scaled(Real c, Ref a) const { return g.scale(c, a); }
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
  Value scaled(Real c, Value a) const { return {g.scale(c, a.re), g.scale(c, a.im)}; }
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
  if (8 * num % den == 0) {
    const int quarter = static_cast<int>(8 * num / den) / 2;
    return alg.turned(alg.scaled(square_root(Real(0.5)), alg.add(a, alg.turned(a, 1))), quarter);
  }
  return alg.times(a, cos_turn(num, den), sin_turn(num, den));
}

// The same with an angle for each lane; lanes that need no product take part in those of the others.
Ref twiddled_lanes(Graph& g, Ref a, const Angles& angles);

}  // namespace xfm
