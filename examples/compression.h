// What is left of a recording when only the strongest coefficients of its lapped transform are kept.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "examples/sound_file.h"

// Which of many numbers are the strongest, found in one pass over them and fixed memory: they are counted by the upper 21
// bits of their magnitude, so that numbers which agree to 1 part in 4096 pass for equal; of equals the first are kept.
class StrongestCount {
 public:
  StrongestCount() : counts_(size_t{1} << kBits) {}
  void add(std::span<const float> values);
  [[nodiscard]] uint64_t total() const { return total_; }

  static constexpr int kBits = 21;
  static size_t bin(float value);

  // Keeps a share of the numbers that were counted, when they pass once more in the same order.
  class Filter {
   public:
    Filter(const StrongestCount& counted, double share);
    [[nodiscard]] uint64_t kept() const { return kept_; }
    [[nodiscard]] bool keeps(float value) { return bin(value) > limit_ || (bin(value) == limit_ && equals_-- > 0); }

   private:
    uint64_t kept_;
    size_t limit_;
    int64_t equals_;  // how many of the limit's own are still to be kept
  };

 private:
  std::vector<uint64_t> counts_;
  uint64_t total_ = 0;
};

struct CompressionReport {
  uint64_t coefficients = 0;
  double all = 0;  // signal-to-noise ratio in dB with all of them, infinite where nothing differs
  struct Share {
    double share;
    uint64_t kept;
    double ratio;
  };
  std::vector<Share> shares;
};

// Measures several shares, and writes the sound of the last one where `output` is not null.
CompressionReport compress(SoundFile& file, const std::vector<double>& shares, SoundWriter* output);
