#include "lapped_transform.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

namespace {
constexpr int kN = LappedTransform::kFrame, kHalf = kN / 2;
}

LappedTransform::LappedTransform() : window_(2 * kN) {
  for (int i = 0; i < 2 * kN; ++i) window_[i] = static_cast<float>(std::sin(std::numbers::pi * (i + 0.5) / (2 * kN)));
  if (xfmgDCT4InitAlloc_32f(&state_, kN) != xfmStatusOk) throw std::runtime_error("no memory for the transform");
}

LappedTransform::~LappedTransform() { xfmgDCT4Free_32f(state_); }

// A window of four quarters (a, b, c, d) is folded to (-c' - d, a - b'), where ' reverses.
std::vector<float> LappedTransform::analyse(std::span<const float> samples) {
  const size_t frames = (samples.size() + kN - 1) / kN + 1;
  std::vector<float> padded((frames + 1) * kN), out(frames * kN);
  std::copy(samples.begin(), samples.end(), padded.begin() + kN);
  for (size_t frame = 0; frame < frames; ++frame) {
    const float* x = padded.data() + frame * kN;
    const auto at = [&](int i) { return x[i] * window_[i]; };
    float* y = out.data() + frame * kN;
    for (int i = 0; i < kHalf; ++i) {
      y[i] = -at(3 * kHalf - 1 - i) - at(3 * kHalf + i);
      y[kHalf + i] = at(i) - at(kN - 1 - i);
    }
    xfmgDCT4_32f(y, y, state_);
  }
  return out;
}

// (f, g) unfolds to (g, -g', -f', -f); windowed once more, neighbours add up to the signal.
std::vector<float> LappedTransform::synthesise(std::span<const float> coefficients, size_t count) {
  const size_t frames = coefficients.size() / kN;
  std::vector<float> padded((frames + 1) * kN);
  std::vector<float> folded(kN);
  const float scale = 2.0f / kN;  // the transform is its own inverse up to N/2
  for (size_t frame = 0; frame < frames; ++frame) {
    xfmgDCT4_32f(coefficients.data() + frame * kN, folded.data(), state_);
    float* x = padded.data() + frame * kN;
    const auto put = [&](int i, float value) { x[i] += window_[i] * scale * value; };
    for (int i = 0; i < kHalf; ++i) {
      put(i, folded[kHalf + i]);
      put(kN - 1 - i, -folded[kHalf + i]);
      put(3 * kHalf - 1 - i, -folded[i]);
      put(3 * kHalf + i, -folded[i]);
    }
  }
  if (count > (frames ? (frames - 1) * kN : 0)) throw std::invalid_argument("fewer coefficients than samples");
  return {padded.begin() + kN, padded.begin() + kN + static_cast<std::ptrdiff_t>(count)};
}

size_t keep_strongest(std::vector<float>& coefficients, double share) {
  const auto left = static_cast<size_t>(std::clamp(share, 0.0, 1.0) * static_cast<double>(coefficients.size()));
  std::vector<size_t> order(coefficients.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  const auto stronger = [&](size_t a, size_t b) { return std::fabs(coefficients[a]) > std::fabs(coefficients[b]); };
  std::nth_element(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(left), order.end(), stronger);
  for (size_t i = left; i < order.size(); ++i) coefficients[order[i]] = 0;
  return left;
}

double signal_to_noise(std::span<const float> signal, std::span<const float> copy) {
  double power = 0, noise = 0;
  for (size_t i = 0; i < signal.size(); ++i) {
    const double difference = static_cast<double>(signal[i]) - copy[i];
    power += static_cast<double>(signal[i]) * signal[i];
    noise += difference * difference;
  }
  if (power == 0 && noise > 0) return -std::numeric_limits<double>::infinity();
  return noise == 0 ? std::numeric_limits<double>::infinity() : 10 * std::log10(power / noise);
}

LappedReport lapped_report(std::span<const float> samples, double share) {
  LappedTransform lapped;
  LappedReport report;
  std::vector<float> coefficients = lapped.analyse(samples);
  report.coefficients = coefficients.size();
  report.all = signal_to_noise(samples, lapped.synthesise(coefficients, samples.size()));
  report.left = keep_strongest(coefficients, share);
  report.kept = signal_to_noise(samples, lapped.synthesise(coefficients, samples.size()));
  return report;
}
