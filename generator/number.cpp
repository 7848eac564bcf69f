#include "generator/number.h"

#include <quadmath.h>

#include <cstdio>

namespace xfm {

namespace {

struct Circle {
  Real cosine, sine;
};

// The point at 2*pi*num/den; symmetries bring the angle into the first octant.
Circle circle(long long num, long long den) {
  num %= den;
  if (num < 0) num += den;
  if (2 * num > den) {
    const Circle c = circle(den - num, den);
    return {c.cosine, -c.sine};
  }
  if (4 * num > den) {
    const Circle c = circle(den - 2 * num, 2 * den);
    return {-c.cosine, c.sine};
  }
  if (8 * num > den) {
    const Circle c = circle(den - 4 * num, 4 * den);
    return {c.sine, c.cosine};
  }
  if (num == 0) return {1, 0};
  const Real angle = 2 * M_PIq * num / den;
  return {cosq(angle), sinq(angle)};
}

}  // namespace

Real cos_turn(long long num, long long den) { return circle(num, den).cosine; }
Real sin_turn(long long num, long long den) { return circle(num, den).sine; }
Real square_root(Real x) { return sqrtq(x); }

std::string float_literal(Real x) {
  char text[64];
  std::snprintf(text, sizeof text, "%af", static_cast<double>(static_cast<float>(x)));
  return text;
}

std::string double_literal(Real x) {
  char text[64];
  std::snprintf(text, sizeof text, "%a", static_cast<double>(x));
  return text;
}

}  // namespace xfm
