// What an expression graph computes, in extended precision, beside the formula, and how its nodes read.
#pragma once

#include <quadmath.h>

#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "generator/graph.h"

namespace graph_values {

using Value = std::complex<long double>;

inline Value turned(Value v, int quarters) {
  switch (quarters & 3) {
    case 1: return {-v.imag(), v.real()};
    case 2: return -v;
    case 3: return {v.imag(), -v.real()};
    default: return v;
  }
}

// The values of the outputs for given source elements. A lane that a graph declares not to matter is not a number.
inline std::vector<Value> evaluate(const xfm::Graph& g, std::span<const xfm::Point> outputs, const std::vector<Value>& source) {
  constexpr long double kNone = std::numeric_limits<long double>::quiet_NaN();
  std::vector<std::vector<Value>> values(g.size(), std::vector<Value>(g.lanes()));
  const auto at = [&](xfm::Ref r, int lane) { return r ? turned(values[r.node][lane], r.turn) : Value(0); };
  for (int i = 0; i < g.size(); ++i)
    for (int lane = 0; lane < g.lanes(); ++lane) {
      const xfm::Node& node = g[i];
      Value& v = values[i][lane];
      if (node.kind == xfm::Node::Kind::Input) {
        if (node.cells[lane] >= 0) v = source[node.cells[lane]];
      } else if (node.kind == xfm::Node::Kind::Regroup) {
        const xfm::Point& p = node.points[lane];
        v = p.lane == xfm::kAnyLane ? Value(kNone, kNone) : at(p.ref, p.lane);
      } else {
        for (const xfm::Term& t : node.terms) v += static_cast<long double>(t.coef.lane(lane)) * at(t.ref, lane);
      }
    }
  std::vector<Value> result;
  for (const xfm::Point& p : outputs) result.push_back(at(p.ref, p.lane));
  return result;
}

// The transform of x by its formula.
inline std::vector<Value> definition(const std::vector<Value>& x, int sign) {
  const int n = static_cast<int>(x.size());
  std::vector<Value> root(n), y(n);
  for (int e = 0; e < n; ++e) {
    const __float128 angle = 2 * M_PIq * e / n;
    root[e] = {static_cast<long double>(cosq(angle)), sign * static_cast<long double>(sinq(angle))};
  }
  for (int k = 0; k < n; ++k)
    for (int i = 0; i < n; ++i) y[k] += x[i] * root[k * i % n];
  return y;
}

// Largest difference of a bin, as a part of the largest magnitude; not a number anywhere counts as infinite.
inline long double deviation(const std::vector<Value>& got, const std::vector<Value>& expected) {
  long double worst = 0, magnitude = 0;
  for (const Value& v : expected) magnitude = std::max(magnitude, std::abs(v));
  for (size_t k = 0; k < expected.size(); ++k) {
    const long double d = std::abs(got[k] - expected[k]);
    if (!(d <= worst)) worst = std::isnan(d) ? INFINITY : d;
  }
  return worst / magnitude;
}

inline std::vector<Value> source(int n) {
  std::mt19937 engine(n);
  const auto part = [&] { return static_cast<long double>(engine()) / 2147483648.0L - 1; };
  std::vector<Value> x(n);
  for (Value& v : x) v = {part(), part()};
  return x;
}

// A reference of a graph on one lane in full: -i(x0 + 0.5*x1).
inline std::string text(const xfm::Graph& g, xfm::Ref r) {
  if (!r) return "0";
  constexpr const char* kTurns[] = {"", "i", "-", "-i"};
  const xfm::Node& node = g[r.node];
  if (node.kind == xfm::Node::Kind::Input) return kTurns[r.turn] + ("x" + std::to_string(node.cells[0]));
  std::string sum;
  for (const xfm::Term& t : node.terms) {
    char coef[32] = "";
    if (!t.coef.unit()) std::snprintf(coef, sizeof coef, "%g*", static_cast<double>(t.coef.lane(0)));
    sum += (sum.empty() ? "" : " + ") + std::string(coef) + text(g, t.ref);
  }
  return std::string(kTurns[r.turn]) + "(" + sum + ")";
}

}  // namespace graph_values
