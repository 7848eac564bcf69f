#include "examples/compression.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "examples/lapped_transform.h"

namespace {

constexpr int kN = LappedTransform::kFrame;

// All frames of a recording in their order, frame f over the samples (f-1)*N .. (f+1)*N - 1 of every channel.
template <class Each>
void for_each_frame(SoundFile& file, const char* title, const Each& each) {
  Stretches sound(file, title);
  const long frames = (file.frames() + kN - 1) / kN + 1;
  for (long frame = 0; frame < frames; ++frame) {
    sound.move((frame - 1) * kN, 2 * kN);
    each(frame, sound);
  }
}

// One way of keeping coefficients: what it sounds like, and how far that is from the recording.
class Version {
 public:
  explicit Version(int channels) : overlap_(static_cast<size_t>(channels), std::vector<float>(2 * kN)) {}

  // The next frame of a channel; afterwards block() is the stretch of N samples before this frame's second half.
  void add(LappedTransform& lapped, size_t channel, const float* coefficients) {
    lapped.synthesise(coefficients, overlap_[channel].data());
  }
  std::span<const float> block(size_t channel) const { return {overlap_[channel].data(), kN}; }
  void compare(size_t channel, std::span<const float> samples) {
    for (size_t i = 0; i < samples.size(); ++i) {
      const double difference = static_cast<double>(samples[i]) - overlap_[channel][i];
      noise_ += difference * difference;
    }
  }
  void advance(size_t channel) {
    auto& samples = overlap_[channel];
    std::copy(samples.begin() + kN, samples.end(), samples.begin());
    std::fill(samples.begin() + kN, samples.end(), 0.0f);
  }
  double ratio(double power) const {
    if (noise_ == 0) return std::numeric_limits<double>::infinity();
    return 10 * std::log10(power / noise_);
  }

 private:
  std::vector<std::vector<float>> overlap_;  // by channel: what is complete, and what the next frame adds to
  double noise_ = 0;
};

}  // namespace

size_t StrongestCount::bin(float value) { return (std::bit_cast<uint32_t>(value) & 0x7fffffffu) >> (31 - kBits); }

void StrongestCount::add(std::span<const float> values) {
  for (const float value : values) ++counts_[bin(value)];
  total_ += values.size();
}

StrongestCount::Filter::Filter(const StrongestCount& counted, double share)
    : kept_(static_cast<uint64_t>(share * static_cast<double>(counted.total_))), limit_(counted.counts_.size() - 1), equals_(0) {
  uint64_t above = 0;
  while (limit_ > 0 && above + counted.counts_[limit_] < kept_) above += counted.counts_[limit_--];
  equals_ = static_cast<int64_t>(kept_ - above);
}

CompressionReport compress(SoundFile& file, const std::vector<double>& shares, SoundWriter* output) {
  const auto channels = static_cast<size_t>(file.channels());
  LappedTransform lapped;
  std::vector<float> coefficients(kN), left(kN), interleaved;
  StrongestCount counted;
  for_each_frame(file, "Lapped transform", [&](long, const Stretches& sound) {
    for (size_t c = 0; c < channels; ++c) {
      lapped.analyse(sound.channel(static_cast<int>(c)).data(), coefficients.data());
      counted.add(coefficients);
    }
  });

  std::vector<StrongestCount::Filter> filters;
  for (const double share : shares) filters.emplace_back(counted, share);
  std::vector<Version> versions(shares.size() + 1, Version(file.channels()));
  double power = 0;
  for_each_frame(file, "Sound", [&](long frame, const Stretches& sound) {
    const long done = std::min(file.frames() - (frame - 1) * kN, long{kN});  // samples that this frame completes
    const auto count = static_cast<size_t>(frame == 0 ? 0 : done);
    interleaved.resize(count * channels);
    for (size_t c = 0; c < channels; ++c) {
      const std::span<const float> samples = sound.channel(static_cast<int>(c));
      lapped.analyse(samples.data(), coefficients.data());
      for (size_t i = 0; i < count; ++i) power += static_cast<double>(samples[i]) * samples[i];
      for (size_t v = 0; v < versions.size(); ++v) {
        left = coefficients;
        if (v > 0)
          for (float& value : left)
            if (!filters[v - 1].keeps(value)) value = 0;
        versions[v].add(lapped, c, left.data());
        versions[v].compare(c, samples.first(count));
      }
      for (size_t i = 0; i < count; ++i) interleaved[i * channels + c] = versions.back().block(c)[i];
      for (Version& version : versions) version.advance(c);
    }
    if (output != nullptr) output->write(interleaved);
  });

  CompressionReport report{counted.total(), versions[0].ratio(power), {}};
  for (size_t i = 0; i < shares.size(); ++i) report.shares.push_back({shares[i], filters[i].kept(), versions[i + 1].ratio(power)});
  return report;
}
