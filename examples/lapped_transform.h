// The lapped transform (MDCT) of audio codecs, by folding into the DCT-IV: frames of 1024 coefficients from windows of
// 2048 samples that overlap by half, under a sine window. What the folding adds as aliasing, the next frame takes away.
#pragma once

#include <span>
#include <vector>

#include "xfm.h"

class LappedTransform {
 public:
  static constexpr int kFrame = 1024;

  LappedTransform();
  ~LappedTransform();
  LappedTransform(const LappedTransform&) = delete;
  LappedTransform& operator=(const LappedTransform&) = delete;

  // Coefficients of all frames, one behind the other; the signal stands half a window into silence on both sides.
  std::vector<float> analyse(std::span<const float> samples);
  // The signal of `count` samples that the coefficients stand for.
  std::vector<float> synthesise(std::span<const float> coefficients, size_t count);

 private:
  std::vector<float> window_;
  XfmDCT4State_32f* state_ = nullptr;
};

// Sets all coefficients but the strongest `share` (0 to 1) to zero and tells how many are left.
size_t keep_strongest(std::vector<float>& coefficients, double share);

// Signal-to-noise ratio in decibels; infinite where nothing differs.
double signal_to_noise(std::span<const float> signal, std::span<const float> copy);

struct LappedReport {
  double all = 0;   // signal-to-noise ratio with every coefficient kept
  double kept = 0;  // with a share of them
  size_t coefficients = 0, left = 0;
};

LappedReport lapped_report(std::span<const float> samples, double share);
