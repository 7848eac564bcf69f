#include "examples/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "examples/compression.h"
#include "examples/spectrogram.h"
#include "examples/tones.h"
#include "generator/output.h"

namespace {

// To a tenth, and without the sign of a zero.
double tenths(double level) { return std::round(10 * level) / 10 + 0.0; }
double decibels(double amplitude) { return tenths(20 * std::log10(amplitude)); }

// A name as it can be drawn: bytes that are no UTF-8 become question marks.
std::string drawable(std::string text) {
  for (size_t i = 0; i < text.size();) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const size_t length = byte < 0x80 ? 1 : byte >= 0xc2 && byte < 0xe0 ? 2 : byte >= 0xe0 && byte < 0xf0 ? 3 : byte >= 0xf0 && byte < 0xf5 ? 4 : 0;
    bool good = length > 0 && i + length <= text.size() && byte >= 0x20;
    for (size_t k = 1; good && k < length; ++k) good = (static_cast<unsigned char>(text[i + k]) & 0xc0) == 0x80;
    if (!good) text[i] = '?';
    i += good ? length : 1;
  }
  return text;
}

std::string title_of(const SoundFile& file) {
  std::string name = drawable(std::filesystem::path(file.path()).filename().string());
  if (name.size() > 80) name.resize(80), name = drawable(name);
  char rest[100];
  std::snprintf(rest, sizeof rest, "  -  %.2f s, %d Hz, frames of %d samples", file.seconds(), file.rate(), spectrogram_points(file.rate()));
  return name + rest;
}

}  // namespace

void print_recording(const SoundFile& file) {
  std::printf("%s\n  %.3f s, %d channel%s, %d samples a second; %s\n", file.path().c_str(), file.seconds(), file.channels(),
              file.channels() == 1 ? "" : "s", file.rate(), file.encoding().c_str());
  if (file.peak() == 0) {
    std::printf("  silent: every sample is 0\n");
    return;
  }
  std::printf("  peak %.1f dB", decibels(file.peak()));
  if (const double mean = std::abs(file.mean()); mean > 1e-3 * file.peak()) std::printf(", constant part %.4g (%.1f dB)", file.mean(), decibels(mean));
  std::printf("\n");
  if (file.peak() > 1.0001) std::printf("  samples go beyond full scale, which is 1: to %.4g\n", file.peak());
  if (file.channels_cancel()) std::printf("  the channels are in opposite phase: their sum is silent, so each is analysed by itself\n");
}

void print_tones(SoundFile& file) {
  std::printf("Strongest tones (mean level, 0 dB is a sine of full scale)\n");
  if (file.frames() < kShortestForTones) {
    std::printf("  none: shorter than %ld samples\n", kShortestForTones);
    return;
  }
  const std::vector<Tone> tones = strongest_tones(file, 5);
  const double varying = file.power() - file.mean() * file.mean();
  if (tones.empty() && file.power() > 0 && varying < 1e-6 * file.power()) std::printf("  none: the recording is a constant\n");
  else if (tones.empty()) std::printf("  none: nothing above -100 dB\n");
  for (const Tone& tone : tones) std::printf("  %8.1f Hz  %6.1f dB\n", tone.frequency, tenths(tone.level));
}

void write_spectrogram(SoundFile& file, const std::string& path) {
  const xfm::tool::PictureFormat format = xfm::tool::picture_format(path);
  xfm::OutputFile output(path);
  output.write(draw_spectrogram(file, title_of(file), format));
  output.commit();
  std::printf("Spectrogram: %s\n", path.c_str());
}

void write_compressed(SoundFile& file, double share, const std::string& path) {
  std::vector<double> shares = {0.25, 0.1, 0.05};
  std::erase(shares, share);
  shares.push_back(share);
  SoundWriter output(path, file);
  const CompressionReport report = compress(file, shares, &output);
  std::printf("Lapped transform, frames of 1024 coefficients (xfmgDCT4_32f)\n");
  constexpr double kRoundingOnly = 100;  // dB; single precision leaves about 135
  if (report.all < kRoundingOnly) throw std::runtime_error("the lapped transform does not give the recording back");
  const auto ratio = [](double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f dB", value);
    return std::isinf(value) ? std::string("nothing is lost") : text;
  };
  std::printf("  all %llu coefficients kept: signal-to-noise ratio %s\n", static_cast<unsigned long long>(report.coefficients), ratio(report.all).c_str());
  for (const auto& [part, kept, value] : report.shares)
    std::printf("  strongest %4.3g %% kept (%llu): %s\n", 100 * part, static_cast<unsigned long long>(kept), ratio(value).c_str());
  output.commit();
  std::printf("Sound of the strongest %.3g %%: %s\n", 100 * share, path.c_str());
}
