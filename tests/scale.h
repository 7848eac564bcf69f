// The factor that a flag puts on every output.
#pragma once

#include <cmath>

#include "generator/functions.h"
#include "xfm.h"

namespace test_scale {

template <class T>
T scale_of(xfm::ScaleRule rule, int flag, int n) {
  using xfm::ScaleRule;
  if (flag == xfmScaleBySqrtN) return static_cast<T>(1 / std::sqrt(static_cast<long double>(n)));
  const bool divides = (flag == xfmScaleFwdByN && rule != ScaleRule::Inverse) || (flag == xfmScaleInvByN && rule != ScaleRule::Forward);
  return static_cast<T>(divides ? 1.0L / n : 1.0L);
}

}  // namespace test_scale
