#include "examples/lapped_transform.h"

#include <cmath>
#include <numbers>
#include <stdexcept>

namespace {
constexpr int kN = LappedTransform::kFrame, kHalf = kN / 2;
}

LappedTransform::LappedTransform() : window_(2 * kN), folded_(kN) {
  for (int i = 0; i < 2 * kN; ++i) window_[i] = static_cast<float>(std::sin(std::numbers::pi * (i + 0.5) / (2 * kN)));
  if (xfmgDCT4InitAlloc_32f(&state_, kN) != xfmStatusOk) throw std::runtime_error("no memory for the transform");
}

LappedTransform::~LappedTransform() { xfmgDCT4Free_32f(state_); }

// A window of four quarters (a, b, c, d) is folded to (-c' - d, a - b'), where ' reverses.
void LappedTransform::analyse(const float* samples, float* coefficients) {
  const auto at = [&](int i) { return samples[i] * window_[i]; };
  for (int i = 0; i < kHalf; ++i) {
    folded_[i] = -at(3 * kHalf - 1 - i) - at(3 * kHalf + i);
    folded_[kHalf + i] = at(i) - at(kN - 1 - i);
  }
  xfmgDCT4_32f(folded_.data(), coefficients, state_);
}

// (f, g) unfolds to (g, -g', -f', -f); windowed once more, neighbours add up to the signal.
void LappedTransform::synthesise(const float* coefficients, float* samples) {
  const float scale = 2.0f / kN;  // the transform is its own inverse up to N/2
  xfmgDCT4_32f(coefficients, folded_.data(), state_);
  const auto put = [&](int i, float value) { samples[i] += window_[i] * scale * value; };
  for (int i = 0; i < kHalf; ++i) {
    put(i, folded_[kHalf + i]);
    put(kN - 1 - i, -folded_[kHalf + i]);
    put(3 * kHalf - 1 - i, -folded_[i]);
    put(3 * kHalf + i, -folded_[i]);
  }
}
