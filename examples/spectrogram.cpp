#include "spectrogram.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "canvas.h"
#include "spectrum.h"

namespace {

// Places, in pixels.
constexpr int kWidth = 1200, kHeight = 720;
constexpr int kLeft = 90, kPlotWidth = 980, kRight = kLeft + kPlotWidth;
constexpr int kWaveTop = 50, kWaveHeight = 110;
constexpr int kTop = 180, kPlotHeight = 470, kBottom = kTop + kPlotHeight;
constexpr int kBarLeft = kRight + 25, kBarWidth = 20;

constexpr double kRange = 80;  // in dB, from the brightest to black

// The palette: a ramp of colours, then those of paper and ink.
constexpr int kRamp = 250;
constexpr Canvas::Colour kPaper = 250, kInk = 251, kWave = 252;

Canvas::Palette make_palette() {
  // Dark to light through violet, red and orange, so that it also reads in grey.
  constexpr double kStops[][3] = {{0, 0, 8},      {40, 11, 84},   {101, 21, 110}, {159, 42, 99},
                                  {212, 72, 66},  {245, 125, 21}, {250, 193, 39}, {252, 255, 164}};
  constexpr int kPieces = static_cast<int>(std::size(kStops)) - 1;
  Canvas::Palette palette{};
  for (int i = 0; i < kRamp; ++i) {
    const double at = static_cast<double>(i) * kPieces / (kRamp - 1);
    const int piece = std::min(static_cast<int>(at), kPieces - 1);
    for (int c = 0; c < 3; ++c) {
      const double value = std::lerp(kStops[piece][c], kStops[piece + 1][c], at - piece);
      palette[i][c] = static_cast<uint8_t>(std::lround(value));
    }
  }
  palette[kPaper] = {255, 255, 255};
  palette[kInk] = {30, 30, 30};
  palette[kWave] = {70, 90, 160};
  return palette;
}

// The distance between the marks of an axis: 1, 2 or 5 times a power of ten, at most `most` marks.
double mark_step(double range, int most) {
  const double power = std::pow(10, std::floor(std::log10(range / most)));
  for (const double factor : {1.0, 2.0, 5.0})
    if (range / (power * factor) <= most) return power * factor;
  return power * 10;
}

std::string in_words(double value, double step) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9))), value);
  return text;
}

// The frequency axis is the mel scale of hearing: even below about 700 Hz, logarithmic above.
double mel(double frequency) { return std::log1p(frequency / 700); }
double frequency_of_mel(double mel) { return 700 * std::expm1(mel); }

int text_width(const std::string& text) { return static_cast<int>(text.size()) * Canvas::kLetterWidth; }

// Level in dB of every pixel of the plot, by column from left to right, from the top frequency down.
std::vector<float> levels(const Recording& recording) {
  PowerSpectrum spectrum(spectrogram_points(recording.rate));
  const long size = static_cast<long>(recording.samples.size());
  const double top = recording.rate / 2.0;
  std::vector<float> levels(static_cast<size_t>(kPlotWidth) * kPlotHeight);
  std::vector<float> strongest(static_cast<size_t>(spectrum.bins()));
  const long hop = std::max(1, spectrum.transform().points() / 4);
  for (int column = 0; column < kPlotWidth; ++column) {
    // A column shows the strongest of the frames that fall into it.
    const long from = size * column / kPlotWidth, to = std::max(from + 1, size * (column + 1) / kPlotWidth);
    std::fill(strongest.begin(), strongest.end(), 0.0f);
    for (long centre = from; centre < to; centre += hop) {
      const std::span<const float> power = spectrum.at(recording.samples, centre);
      for (size_t k = 0; k < power.size(); ++k) strongest[k] = std::max(strongest[k], power[k]);
    }
    for (int row = 0; row < kPlotHeight; ++row) {
      const double height = (kPlotHeight - 0.5 - row) / kPlotHeight;
      const double bin = frequency_of_mel(height * mel(top)) / top * (spectrum.bins() - 1);
      const size_t below = static_cast<size_t>(bin);
      const double power = std::lerp(strongest[below], strongest[below + 1], bin - static_cast<double>(below));
      levels[static_cast<size_t>(column) * kPlotHeight + row] = static_cast<float>(10 * std::log10(power + 1e-20));
    }
  }
  return levels;
}

void draw_plot(Canvas& canvas, const std::vector<float>& levels, double top_level) {
  for (int column = 0; column < kPlotWidth; ++column) {
    for (int row = 0; row < kPlotHeight; ++row) {
      const double level = levels[static_cast<size_t>(column) * kPlotHeight + row];
      const double share = std::clamp((level - top_level) / kRange + 1, 0.0, 1.0);
      canvas.set(kLeft + column, kTop + row, static_cast<Canvas::Colour>(share * (kRamp - 1)));
    }
  }
}

void draw_wave(Canvas& canvas, const Recording& recording) {
  const auto& samples = recording.samples;
  float peak = 1e-9f;
  for (const float sample : samples) peak = std::max(peak, std::abs(sample));
  const double middle = kWaveTop + kWaveHeight / 2.0;
  for (int column = 0; column < kPlotWidth; ++column) {
    const size_t from = samples.size() * column / kPlotWidth;
    const size_t to = std::max(from + 1, samples.size() * (column + 1) / kPlotWidth);
    const auto [low, high] = std::minmax_element(samples.begin() + from, samples.begin() + to);
    const auto y = [&](float value) { return static_cast<int>(middle - value / peak * (kWaveHeight / 2.0 - 2)); };
    canvas.fill(kLeft + column, y(*high), 1, y(*low) - y(*high) + 1, kWave);
  }
  canvas.upright_text(kLeft - 30, kWaveTop + kWaveHeight / 2 + text_width("wave") / 2, "wave", kInk);
}

void draw_frame(Canvas& canvas, int x, int y, int width, int height) {
  canvas.fill(x - 1, y - 1, width + 2, 1, kInk);
  canvas.fill(x - 1, y + height, width + 2, 1, kInk);
  canvas.fill(x - 1, y - 1, 1, height + 2, kInk);
  canvas.fill(x + width, y - 1, 1, height + 2, kInk);
}

void draw_time_axis(Canvas& canvas, double seconds) {
  const double step = mark_step(seconds, 10);
  for (int mark = 0; mark * step <= seconds; ++mark) {
    const int x = kLeft + static_cast<int>(std::lround(mark * step / seconds * kPlotWidth));
    const std::string text = in_words(mark * step, step);
    canvas.fill(x, kBottom, 1, 7, kInk);
    canvas.text(x - text_width(text) / 2, kBottom + 10, text, kInk);
  }
  const std::string name = "time in seconds";
  canvas.text(kLeft + (kPlotWidth - text_width(name)) / 2, kBottom + 32, name, kInk);
}

void draw_frequency_axis(Canvas& canvas, double top) {
  for (const int frequency : {0, 100, 200, 500, 1000, 2000, 5000, 10000, 20000, 50000, 100000}) {
    if (frequency > top) break;
    const int y = kBottom - 1 - static_cast<int>(std::lround(mel(frequency) / mel(top) * (kPlotHeight - 1)));
    const std::string text = std::to_string(frequency);
    canvas.fill(kLeft - 7, y, 7, 1, kInk);
    canvas.text(kLeft - 12 - text_width(text), y - Canvas::kLetterHeight / 2, text, kInk);
  }
  const std::string name = "frequency in Hz (mel scale)";
  canvas.upright_text(6, kTop + (kPlotHeight + text_width(name)) / 2, name, kInk);
}

void draw_colour_bar(Canvas& canvas, double top_level) {
  for (int row = 0; row < kPlotHeight; ++row)
    canvas.fill(kBarLeft, kTop + row, kBarWidth, 1,
                static_cast<Canvas::Colour>((kPlotHeight - 1 - row) * (kRamp - 1) / (kPlotHeight - 1)));
  draw_frame(canvas, kBarLeft, kTop, kBarWidth, kPlotHeight);
  for (double level = std::floor(top_level / 10) * 10; level > top_level - kRange; level -= 10) {
    const int y = kTop + static_cast<int>(std::lround((top_level - level) / kRange * (kPlotHeight - 1)));
    canvas.fill(kBarLeft + kBarWidth, y, 6, 1, kInk);
    canvas.text(kBarLeft + kBarWidth + 10, y - Canvas::kLetterHeight / 2, in_words(level, 1), kInk);
  }
  canvas.text(kBarLeft - 10, kTop - 22, "level in dB", kInk);
}

}  // namespace

int spectrogram_points(int rate) {
  int points = 64;
  while (points < 4096 && points < 0.03 * rate) points *= 2;
  return points;
}

std::string spectrogram_png(const Recording& recording, const std::string& title) {
  Canvas canvas(kWidth, kHeight, kPaper);
  const std::vector<float> all = levels(recording);
  const double top_level = std::max(-100.0f, *std::max_element(all.begin(), all.end()));
  canvas.text(kLeft, 18, title, kInk);
  draw_wave(canvas, recording);
  draw_frame(canvas, kLeft, kWaveTop, kPlotWidth, kWaveHeight);
  draw_plot(canvas, all, top_level);
  draw_frame(canvas, kLeft, kTop, kPlotWidth, kPlotHeight);
  draw_time_axis(canvas, recording.seconds());
  draw_frequency_axis(canvas, recording.rate / 2.0);
  draw_colour_bar(canvas, top_level);
  return canvas.png(make_palette());
}
