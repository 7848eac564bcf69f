// The lapped transform (MDCT) of audio codecs, by folding into the DCT-IV: frames of 1024 coefficients from windows of
// 2048 samples that overlap by half, under a sine window. What the folding adds as aliasing, the next frame takes away.
#pragma once

#include <vector>

#include "xfm.h"

class LappedTransform {
 public:
  static constexpr int kFrame = 1024;

  LappedTransform();
  ~LappedTransform();
  LappedTransform(const LappedTransform&) = delete;
  LappedTransform& operator=(const LappedTransform&) = delete;

  // The coefficients of one frame, from the 2048 samples under its window.
  void analyse(const float* samples, float* coefficients);
  // What a frame's coefficients add to the 2048 samples under its window.
  void synthesise(const float* coefficients, float* samples);

 private:
  std::vector<float> window_, folded_;
  XfmDCT4State_32f* state_ = nullptr;
};
