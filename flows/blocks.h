// Blocks and links over complex values of an expression graph, written once for two kinds of them.
//
// `Physical`: a reference is a complex value of the data; a quarter turn is free.
// `Pairs`: a pair of references, the real and the imaginary part of a bin of real transforms; a quarter turn exchanges the two.
//
// `sign` is that of the exponent: -1 forward, +1 inverse.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "flows/numbers.h"
#include "flows/plan.h"
#include "generator/graph.h"

namespace xfm {

struct ComplexNumber {
  Real re = 0, im = 0;

  // exp(2*pi*i*num/den)
  static ComplexNumber root(long long num, long long den) { return {cos_turn(num, den), sin_turn(num, den)}; }
  // The k with this number = exp(2*pi*i*k/8), from 0 to 7; nothing for other numbers.
  std::optional<int> eighth_turns() const;
  friend bool operator==(const ComplexNumber& a, const ComplexNumber& b) { return is_zero(a.re - b.re) && is_zero(a.im - b.im); }
};

// Flows of the same plan go different ways in complex and in real kernels: the counts are the same, last bits and signs of
// zeros are not. `Transposed`: so that a network is as in real kernels once it has been transposed.
enum class Convention { Complex, Real, Transposed };

inline Convention transposed(Convention c) {
  return c == Convention::Real ? Convention::Transposed : c == Convention::Transposed ? Convention::Real : c;
}

struct Physical {
  using Value = Ref;
  Graph& g;

  Ref add(Ref a, Ref b) const { return g.add(a, b); }
  Ref sub(Ref a, Ref b) const { return g.sub(a, b); }
  Ref turned(Ref a, int quarters) const { return a.turned(quarters); }
  Ref times(Ref a, const ComplexNumber& c) const { return g.lin({{c.re, a}, {c.im, a.turned(1)}}); }
  // By an odd number of eighth turns: sqrt(1/2) times the sum and the difference of the components.
  Ref eighths(Ref a, int odd) const {
    const Ref sum = g.add(a, a.turned(odd % 4 == 1 ? 1 : 3));
    return g.scale(odd == 1 || odd == 7 ? square_root(Real(0.5)) : -square_root(Real(0.5)), sum);
  }
  bool centred() const { return false; }
  const Plan& in_row(const Plan& plan, bool real) const { return real ? plan.in_real_rows() : plan.in_complex_rows(); }
  // A function of lists of references applied to both components of complex values.
  template <class F>
  std::vector<Ref> by_components(std::span<const Ref> x, F f) const {
    return f(x);
  }
};

struct Pair {
  Ref re, im;
  explicit operator bool() const { return bool(re) || bool(im); }
  Pair conj() const { return {re, -im}; }
};

struct Pairs {
  using Value = Pair;
  Graph& g;
  Convention convention = Convention::Complex;

  Pair add(Pair a, Pair b) const {
    return parts([&] { return g.add(a.re, b.re); }, [&] { return g.add(a.im, b.im); });
  }
  Pair sub(Pair a, Pair b) const { return add(a, {-b.re, -b.im}); }
  Pair turned(Pair a, int quarters) const;
  Pair times(Pair a, const ComplexNumber& c) const {
    return parts([&] { return g.lin({{c.re, a.re}, {-c.im, a.im}}); }, [&] { return g.lin({{c.re, a.im}, {c.im, a.re}}); });
  }
  Pair eighths(Pair a, int odd) const;
  bool centred() const { return convention != Convention::Complex; }
  const Plan& in_row(const Plan& plan, bool) const { return plan.in_complex_rows(); }
  template <class F>
  std::vector<Pair> by_components(std::span<const Pair> x, F f) const {
    std::vector<Ref> component[2];
    for (const Pair& v : x) component[0].push_back(v.re), component[1].push_back(v.im);
    for (int i = 0; i < 2; ++i) {
      const Graph::Loop loop(g, "part", i);
      component[i] = f(component[i]);
    }
    std::vector<Pair> out;
    for (size_t i = 0; i < component[0].size(); ++i) out.push_back({component[0][i], component[1][i]});
    return out;
  }

 private:
  // The real and the imaginary part of one value, as iterations of a loop.
  template <class Re, class Im>
  Pair parts(Re real_part, Im imaginary_part) const {
    const Graph::Loop value(g, "value " + std::to_string(g.next_in_loop()));
    Pair made;
    {
      const Graph::Loop loop(g, "part", 0);
      made.re = real_part();
    }
    const Graph::Loop loop(g, "part", 1);
    made.im = imaginary_part();
    return made;
  }
};

// A value times a constant: free for quarter turns, two products for odd eighths, else four.
template <class A>
typename A::Value times(const A& alg, typename A::Value a, const ComplexNumber& c) {
  const std::optional<int> turns = c.eighth_turns();
  if (!turns) return alg.times(a, c);
  return *turns % 2 ? alg.eighths(a, *turns) : alg.turned(a, *turns / 2);
}

template <class A>
std::vector<typename A::Value> two_point(const A& alg, std::span<const typename A::Value> x) {
  return {alg.add(x[0], x[1]), alg.sub(x[0], x[1])};
}

template <class A>
std::vector<typename A::Value> four_point(const A& alg, std::span<const typename A::Value> x, int sign) {
  const auto s = alg.add(x[0], x[2]), d = alg.sub(x[0], x[2]);
  const auto e = alg.add(x[1], x[3]), f = alg.turned(alg.sub(x[1], x[3]), sign);
  return {alg.add(s, e), alg.add(d, f), alg.sub(s, e), alg.sub(d, f)};
}

// Bins of real data that are real.
inline bool real_bin(int k, int length) { return k == 0 || 2 * k == length; }

// Where the points of a link stand: input of block j at its point i, and output k2 of row k1.
struct LinkMap {
  explicit LinkMap(const Plan& plan, bool centred = false)
      : a(plan.first().length), b(plan.second().length), twiddles(plan.kind == Plan::Kind::CooleyTukey), centred(centred),
        steps(plan.numbering) {}
  int length() const { return a * b; }
  int input(int i, int j) const { return twiddles ? i * b + j : (b * i * steps.element + a * j * steps.row) % length(); }
  // The points of each block of the first stage.
  template <class T>
  std::vector<std::vector<T>> classes(std::span<const T> x) const {
    std::vector<std::vector<T>> all(b);
    for (int j = 0; j < b; ++j)
      for (int i = 0; i < a; ++i) all[j].push_back(x[input(i, j)]);
    return all;
  }
  // What point j of row k1 is multiplied by between the stages.
  ComplexNumber twiddle(int sign, int j, int k1) const {
    return ComplexNumber::root(twiddles ? sign * j * bin(k1) : 0, length());
  }
  // The bin of a class that row k1 stands for. Centred, those above half a class turn backwards, by the smaller angle.
  int bin(int k1) const { return centred && 2 * k1 > a ? k1 - a : k1; }
  int output(int k1, int k2) const {
    if (twiddles) return residue(bin(k1) + a * k2, length());
    return chinese_remainder(residue(k1 * inverse_mod(steps.element, a), a), a, residue(k2 * inverse_mod(steps.row, b), b), b);
  }

  int a, b;
  bool twiddles, centred;
  Numbering steps;
};

// A plan over complex values of either kind. `block` makes what is no link and no butterfly: block(plan, x).
template <class A, class Block>
std::vector<typename A::Value> planned(const A& alg, const Plan& plan, std::span<const typename A::Value> x, int sign,
                                       const Block& block) {
  using Value = typename A::Value;
  if (!plan.link()) {
    if (plan.kind == Plan::Kind::Block && plan.length == 2) return two_point(alg, x);
    if (plan.kind == Plan::Kind::Block && plan.length == 4) return four_point(alg, x, sign);
    return block(plan, x);
  }
  const LinkMap map(plan, alg.centred());
  std::vector<std::vector<Value>> u = map.classes(x);
  for (int j = 0; j < map.b; ++j) {
    const Graph::Loop loop(alg.g, "class", j);
    u[j] = planned<A>(alg, plan.first(), u[j], sign, block);
  }
  std::vector<Value> y(map.length());
  for (int k1 = 0; k1 < map.a; ++k1) {
    const Graph::Loop loop(alg.g, "row", k1);
    std::vector<Value> in(map.b);
    for (int j = 0; j < map.b; ++j) {
      const Graph::Loop rotation(alg.g, "rotation", j);
      in[j] = times(alg, u[j][k1], map.twiddle(sign, j, k1));
    }
    const std::vector<Value> z = planned<A>(alg, alg.in_row(plan.second(), real_bin(k1, map.a)), in, sign, block);
    for (int k2 = 0; k2 < map.b; ++k2) y[map.output(k1, k2)] = z[k2];
  }
  return y;
}

// Rader's method: with a primitive root g the bins of prime length p are a cyclic convolution of length L = p-1 of x[g^q]
// with exp(-2*pi*i*g^-q/p), whose results stand at the bins g^-q; x[0] is in all of them.
class RaderMap {
 public:
  explicit RaderMap(const Plan& plan)
      : length(plan.length - 1),
        prime_(plan.length),
        root_(plan.numbering.root ? plan.numbering.root : primitive_root(plan.length)),
        start_(plan.numbering.start) {}

  // x[start*g^q] for all q, and the bin of result q.
  template <class T>
  std::vector<T> sequence(std::span<const T> x) const {
    std::vector<T> in;
    for (int q = 0; q < length; ++q) in.push_back(x[start_ * power_mod(root_, q, prime_) % prime_]);
    return in;
  }
  int output(int q) const { return inverse_mod(start_, prime_) * power_mod(inverse_mod(root_, prime_), q, prime_) % prime_; }
  // C[j] = (1/L) * sum over q of W^(g^-q) * exp(-2*pi*i*q*j/L), W = exp(sign*2*pi*i/p): C[0] = -1/L exactly, and C[L/2] is
  // real or imaginary.
  std::vector<ComplexNumber> spectrum(int sign) const;

  const int length;

 private:
  const int prime_, root_, start_;
};

// Rader's method on complex values: `run` makes a transform, run(plan, x, sign); `multiply` takes bins times constants. x[0]
// enters at bin 0 only, which feeds it to all outputs.
template <class Value, class Add, class Multiply, class Run>
std::vector<Value> complex_rader(const Plan& plan, std::span<const Value> x, int sign, Add add, Multiply multiply, Run run) {
  const RaderMap map(plan);
  std::vector<Value> bins = run(plan.first(), map.sequence(x), -1), y(plan.length);
  y[0] = add(x[0], bins[0]);
  multiply(bins, map.spectrum(sign));
  bins[0] = add(x[0], bins[0]);
  const std::vector<Value> results = run(mirrored(plan.first()), bins, +1);
  for (int q = 0; q < map.length; ++q) y[map.output(q)] = results[q];
  return y;
}

}  // namespace xfm
