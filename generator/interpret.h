// What a graph of complex values computes, to the last bit: the definition of the kernels. Products and sums are those of the
// precision; where products widen, they and the sums that they stand in are made in double, and rounded once.
#pragma once

#include <complex>
#include <limits>
#include <span>
#include <vector>

#include "generator/graph.h"
#include "generator/sums.h"

namespace xfm {

template <class T>
class Interpreter {
 public:
  using Value = std::complex<T>;  // used as a pair: no arithmetic of std::complex

  Interpreter(const Graph& g, bool products_widen) : g_(g), products_widen_(products_widen) {}

  // The outputs times a scale. A lane that a graph declares not to matter is not a number.
  std::vector<Value> run(std::span<const Point> outputs, std::span<const Value> source, T scale) const {
    std::vector<std::vector<Value>> values(g_.size(), std::vector<Value>(g_.lanes(), kNothing));
    const auto at = [&](Ref r, int lane) { return r ? turned(values[r.node][lane], r.turn) : Value{}; };
    for (int i = 0; i < g_.size(); ++i)
      for (int lane = 0; lane < g_.lanes(); ++lane) {
        const Node& node = g_[i];
        Value& v = values[i][lane];
        if (node.kind == Node::Kind::Input) {
          if (node.cells[lane] >= 0) v = source[node.cells[lane]];
        } else if (node.kind == Node::Kind::Regroup) {
          const Point& p = node.points[lane];
          if (p.lane != kAnyLane) v = at(p.ref, p.lane);
        } else if (products_widen_ && node.has_products()) {
          v = rounded(sum<double>(node, lane, [&](Ref r) { return values[r.node][lane]; }));
        } else {
          v = sum<T>(node, lane, [&](Ref r) { return values[r.node][lane]; });
        }
      }
    std::vector<Value> result;
    for (const Point& p : outputs) {
      const Value v = at(p.ref, p.lane);
      result.push_back({v.real() * scale, v.imag() * scale});
    }
    return result;
  }

 private:
  static constexpr T kNaN = std::numeric_limits<T>::quiet_NaN();
  static constexpr Value kNothing{kNaN, kNaN};

  template <class U>
  static std::complex<U> turned(std::complex<U> v, int quarters) {
    switch (quarters & 3) {
      case 1: return {-v.imag(), v.real()};
      case 2: return {-v.real(), -v.imag()};
      case 3: return {v.imag(), -v.real()};
      default: return v;
    }
  }
  static Value rounded(std::complex<double> v) { return {static_cast<T>(v.real()), static_cast<T>(v.imag())}; }

  // A sum in the making: the signs of a subtracted term are still to come.
  template <class U>
  struct Part {
    std::complex<U> value;
    bool subtracted;
    std::complex<U> signed_value() const { return subtracted ? -value : value; }
  };

  template <class U, class At>
  static std::complex<U> sum(const Node& node, int lane, const At& at) {
    std::vector<Part<U>> parts;
    for (const Term& t : node.terms) {
      const Value v = at(t.ref);
      const U c = static_cast<U>(t.coef.lane(lane));
      const std::complex<U> product{c * static_cast<U>(v.real()), c * static_cast<U>(v.imag())};
      const bool subtracted = t.ref.turn == 2;
      parts.push_back({turned(product, subtracted ? 0 : t.ref.turn), subtracted});
    }
    const Part<U> all = summed(std::move(parts), [](const Part<U>& a, const Part<U>& b) {
      const bool both = a.subtracted && b.subtracted;
      const std::complex<U> x = both ? a.value : a.signed_value(), y = both ? b.value : b.signed_value();
      return Part<U>{{x.real() + y.real(), x.imag() + y.imag()}, both};
    });
    return all.signed_value();
  }

  const Graph& g_;
  bool products_widen_;
};

}  // namespace xfm
