#include "examples/spectrum.h"

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

namespace {

void require(XfmStatus status) {
  if (status != xfmStatusOk) throw std::runtime_error("a transform failed with status " + std::to_string(status));
}

Xfm32fc product(Xfm32fc a, Xfm32fc b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }

}  // namespace

// With points = columns * rows, n = columns*n2 + n1 and k = k1 + rows*k2, the transform is
//   X[k] = sum over n1 of exp(-2*pi*i*n1*k2/columns) * twiddle(n1*k1) * (sum over n2 of x[n] * exp(-2*pi*i*n2*k1/rows)).
// The inner sums are transforms of real samples, of which a CCS half-spectrum holds the bins k1 = 0 .. rows/2; those
// are enough, for the other outputs are the conjugates of these.
LongTransform::LongTransform(int points) : points_(points), columns_(8), rows_(8) {
  while (columns_ * rows_ < points) (columns_ < rows_ ? columns_ : rows_) *= 2;
  if (columns_ * rows_ != points || rows_ > 64) throw std::invalid_argument("no long transform of this length");
  for (int n = 0; n < columns_; ++n) {
    for (int k = 0; k <= rows_ / 2; ++k) {
      const double angle = -2 * std::numbers::pi * n * k / points;
      twiddles_.push_back({static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))});
    }
  }
  input_.resize(static_cast<size_t>(rows_));
  column_.resize(static_cast<size_t>(rows_ / 2 + 1));
  middle_.resize(twiddles_.size());
  row_.resize(static_cast<size_t>(columns_));
}

void LongTransform::run(const float* samples, Xfm32fc* spectrum) {
  for (int n1 = 0; n1 < columns_; ++n1) {
    for (int n2 = 0; n2 < rows_; ++n2) input_[n2] = samples[columns_ * n2 + n1];
    require(xfmgDFTFwd_RToCCS_32f(input_.data(), &column_[0].re, rows_, xfmScaleNone));
    for (int k1 = 0; k1 <= rows_ / 2; ++k1)
      middle_[k1 * columns_ + n1] = product(column_[k1], twiddles_[n1 * (rows_ / 2 + 1) + k1]);
  }
  for (int k1 = 0; k1 <= rows_ / 2; ++k1) {
    require(xfmgDFTFwd_CToC_32fc(&middle_[k1 * columns_], row_.data(), columns_, xfmScaleNone));
    for (int k2 = 0; k2 < columns_; ++k2) {
      const int k = k1 + rows_ * k2;
      if (k <= points_ / 2) spectrum[k] = row_[k2];
      if (k >= points_ / 2) spectrum[points_ - k] = {row_[k2].re, -row_[k2].im};
    }
  }
}

PowerSpectrum::PowerSpectrum(int points)
    : transform_(points), frame_(points), power_(transform_.bins()), spectrum_(transform_.bins()) {
  double sum = 0;
  for (int n = 0; n < points; ++n) {  // Hann
    window_.push_back(static_cast<float>(0.5 - 0.5 * std::cos(2 * std::numbers::pi * n / points)));
    sum += window_.back();
  }
  for (float& weight : window_) weight *= static_cast<float>(2 / sum);
}

std::span<const double> PowerSpectrum::of(std::span<const float> samples) {
  for (size_t n = 0; n < frame_.size(); ++n) frame_[n] = samples[n] * window_[n];
  transform_.run(frame_.data(), spectrum_.data());
  for (size_t k = 0; k < power_.size(); ++k) {
    const double re = spectrum_[k].re, im = spectrum_[k].im;
    power_[k] = re * re + im * im;
  }
  return power_;
}
