// Spectra of long stretches of sound, put together from the library's short transforms.
#pragma once

#include <span>
#include <vector>

#include "xfm.h"

// Discrete Fourier transform of a power of two of real samples, 64 to 4096, in two steps of at most 64 points: real
// transforms of interleaved parts of the samples, complex transforms across their bins.
class LongTransform {
 public:
  explicit LongTransform(int points);

  [[nodiscard]] int points() const { return points_; }
  [[nodiscard]] int bins() const { return points_ / 2 + 1; }
  // How many calls of the library one run makes.
  [[nodiscard]] int calls() const { return columns_ + rows_ / 2 + 1; }

  // The bins 0 .. points/2 of `points` samples.
  void run(const float* samples, Xfm32fc* spectrum);

 private:
  int points_, columns_, rows_;
  std::vector<Xfm32fc> twiddles_;  // exp(-2*pi*i*n*k/points) at [n * (rows/2 + 1) + k]
  std::vector<Xfm32f> input_;
  std::vector<Xfm32fc> column_, middle_, row_;
};

// The power of each bin of a frame of samples under a Hann window: a sine of amplitude 1 has power 1 at its peak.
class PowerSpectrum {
 public:
  explicit PowerSpectrum(int points);

  [[nodiscard]] int points() const { return transform_.points(); }
  [[nodiscard]] int bins() const { return transform_.bins(); }
  // Of `points` samples; the result lasts until the next call.
  std::span<const double> of(std::span<const float> samples);

 private:
  LongTransform transform_;
  std::vector<float> window_, frame_;
  std::vector<double> power_;
  std::vector<Xfm32fc> spectrum_;
};
