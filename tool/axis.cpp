#include "tool/axis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace xfm::tool {

namespace {

// With as many digits behind the point as a step of this size needs.
std::string in_digits(double value, double step) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9))), value);
  return text;
}

double even_step(double range, int most) {
  const double power = std::pow(10, std::floor(std::log10(range / most)));
  for (const double factor : {1.0, 2.0, 5.0})
    if (range / (power * factor) <= most) return power * factor;
  return power * 10;
}

}  // namespace

std::vector<Mark> even_marks(double range, int most) {
  const double step = even_step(range, most);
  std::vector<Mark> marks;
  for (int i = 0; i * step <= range * (1 + 1e-12); ++i) marks.push_back({i * step, in_digits(i * step, step)});
  return marks;
}

std::vector<Mark> decade_marks(double least, double most) {
  std::vector<Mark> marks;
  for (double power = std::pow(10, std::floor(std::log10(least))); power <= most; power *= 10)
    for (const double factor : {1.0, 2.0, 5.0})
      if (const double value = power * factor; value >= least && value <= most) marks.push_back({value, in_digits(value, power)});
  return marks;
}

}  // namespace xfm::tool
