#include "examples/tones.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "examples/spectrum.h"

namespace {

constexpr double kSilence = 1e-10;  // -100 dB
constexpr int kMostPoints = 4096;

// Mean power of each bin over whole frames that overlap by half; the last one ends where the recording does.
std::vector<double> mean_power(SoundFile& file, PowerSpectrum& spectrum) {
  std::vector<double> mean(static_cast<size_t>(spectrum.bins()));
  Stretches sound(file, "Tones");
  const long points = spectrum.points(), last = file.frames() - points;
  long frames = 0;
  for (long first = 0;; first = std::min(first + points / 2, last)) {
    sound.move(first, points);
    for (int c = 0; c < file.channels(); ++c) {
      const std::span<const double> power = spectrum.of(sound.channel(c));
      for (size_t k = 0; k < mean.size(); ++k) mean[k] += power[k];
    }
    ++frames;
    if (first == last) break;
  }
  for (double& power : mean) power /= static_cast<double>(frames) * file.channels();
  return mean;
}

// A sine between the bins k and k+1 has amplitudes there in a ratio that tells its place d from k, under a Hann window
// (1+d)/(2-d), and the height of its peak, sin(pi*d) / (pi*d*(1-d^2)) below 1.
Tone tone_at(const std::vector<double>& power, size_t k, double hertz_per_bin) {
  const bool above = power[k + 1] >= power[k - 1];
  const double ratio = std::sqrt((above ? power[k + 1] : power[k - 1]) / power[k]);
  const double d = std::clamp((2 * ratio - 1) / (1 + ratio), 0.0, 0.5), x = std::numbers::pi * d;
  const double height = d == 0 ? 1 : x * (1 - d * d) / std::sin(x);
  return {(static_cast<double>(k) + (above ? d : -d)) * hertz_per_bin, 10 * std::log10(power[k] * height * height)};
}

}  // namespace

std::vector<Tone> strongest_tones(SoundFile& file, size_t most) {
  int points = kMostPoints;
  while (points > file.frames()) points /= 2;
  PowerSpectrum spectrum(points);
  const std::vector<double> mean = mean_power(file, spectrum);
  const double gain = file.gain() * file.gain();

  std::vector<size_t> peaks;
  constexpr size_t kWidth = 3;  // a peak stands above this many bins on both sides
  for (size_t k = 2; k + 1 < mean.size(); ++k) {
    const auto from = mean.begin() + static_cast<std::ptrdiff_t>(k < kWidth ? 0 : k - kWidth);
    const auto to = mean.begin() + static_cast<std::ptrdiff_t>(std::min(k + kWidth + 1, mean.size()));
    if (mean[k] > kSilence * gain && *std::max_element(from, to) == mean[k]) peaks.push_back(k);
  }
  std::sort(peaks.begin(), peaks.end(), [&](size_t a, size_t b) { return mean[a] > mean[b]; });
  peaks.resize(std::min(peaks.size(), most));

  std::vector<Tone> tones;
  for (const size_t k : peaks) {
    tones.push_back(tone_at(mean, k, static_cast<double>(file.rate()) / points));
    tones.back().level -= 20 * std::log10(file.gain());
  }
  return tones;
}
