#include "examples/spectrogram.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "examples/spectrum.h"
#include "tool/axis.h"

using namespace spectrogram;
using xfm::tool::Align;
using xfm::tool::Colour;
using xfm::tool::kInk;
using xfm::tool::Mark;
using xfm::tool::Picture;

namespace {

constexpr Colour kWave{70, 90, 160};

// Dark to light through violet, red and orange, so that it also reads in grey; 0 to 1.
Colour colour_of(double share) {
  constexpr double kStops[][3] = {{0, 0, 8},      {40, 11, 84},   {101, 21, 110}, {159, 42, 99},
                                  {212, 72, 66},  {245, 125, 21}, {250, 193, 39}, {252, 255, 164}};
  constexpr int kPieces = static_cast<int>(std::size(kStops)) - 1;
  const double at = std::clamp(share, 0.0, 1.0) * kPieces;
  const int piece = std::min(static_cast<int>(at), kPieces - 1);
  const auto part = [&](int c) { return static_cast<uint8_t>(std::lround(std::lerp(kStops[piece][c], kStops[piece + 1][c], at - piece))); };
  return {part(0), part(1), part(2)};
}

// The frequency axis is the mel scale of hearing: even below about 700 Hz, logarithmic above.
double mel(double frequency) { return std::log1p(frequency / 700); }
double frequency_of_mel(double mel) { return 700 * std::expm1(mel); }

// A column of the picture: the wave's extremes, and the level in dB of every row from the top frequency down.
struct Column {
  float lowest = 0, highest = 0;
  std::vector<float> levels;
};

std::vector<float> levels_of(const std::vector<double>& power, double top) {
  std::vector<float> levels(kPlotHeight);
  for (int row = 0; row < kPlotHeight; ++row) {
    const double height = (kPlotHeight - 0.5 - row) / kPlotHeight;
    const double bin = frequency_of_mel(height * mel(top)) / top * static_cast<double>(power.size() - 1);
    const auto below = static_cast<size_t>(bin);
    const double here = std::lerp(power[below], power[std::min(below + 1, power.size() - 1)], bin - static_cast<double>(below));
    levels[row] = static_cast<float>(10 * std::log10(here + 1e-20));
  }
  return levels;
}

// A column shows the strongest of the frames that fall into it, in the mean of the channels.
std::vector<Column> columns_of(SoundFile& file) {
  PowerSpectrum spectrum(spectrogram_points(file.rate()));
  Stretches sound(file, "Picture");
  const long points = spectrum.points(), hop = points / 4;
  std::vector<double> strongest(static_cast<size_t>(spectrum.bins())), mean(strongest.size());
  std::vector<Column> columns(kPlotWidth);
  for (long x = 0; x < kPlotWidth; ++x) {
    const auto edge = [&](long column) { return static_cast<long>(static_cast<__int128>(file.frames()) * column / kPlotWidth); };
    const long from = edge(x), to = std::max(from + 1, edge(x + 1));
    Column& column = columns[static_cast<size_t>(x)];
    std::fill(strongest.begin(), strongest.end(), 0.0);
    for (long centre = from; centre < to; centre += hop) {
      sound.move(centre - points / 2, points);
      std::fill(mean.begin(), mean.end(), 0.0);
      for (int c = 0; c < file.channels(); ++c) {
        const std::span<const float> samples = sound.channel(c);
        const std::span<const double> power = spectrum.of(samples);
        for (size_t k = 0; k < mean.size(); ++k) mean[k] += power[k] / file.channels();
        const auto [low, high] = std::ranges::minmax(samples.subspan(static_cast<size_t>(points / 2), static_cast<size_t>(std::min(hop, to - centre))));
        column.lowest = std::min(column.lowest, low), column.highest = std::max(column.highest, high);
      }
      for (size_t k = 0; k < mean.size(); ++k) strongest[k] = std::max(strongest[k], mean[k]);
    }
    column.levels = levels_of(strongest, file.rate() / 2.0);
  }
  return columns;
}

void draw_plot(Picture& picture, const std::vector<Column>& columns, double top_level) {
  std::vector<Colour> pixels(static_cast<size_t>(kPlotWidth) * kPlotHeight);
  for (int x = 0; x < kPlotWidth; ++x)
    for (int y = 0; y < kPlotHeight; ++y)
      pixels[static_cast<size_t>(y) * kPlotWidth + x] = colour_of((columns[x].levels[y] - top_level) / kRange + 1);
  picture.image(kLeft, kTop, kPlotWidth, kPlotHeight, pixels);
  picture.frame(kLeft, kTop, kPlotWidth, kPlotHeight, kInk);
}

void draw_wave(Picture& picture, const std::vector<Column>& columns) {
  float peak = 1e-30f;
  for (const Column& column : columns) peak = std::max({peak, -column.lowest, column.highest});
  const double middle = kWaveTop + kWaveHeight / 2.0;
  const auto y = [&](float value) { return std::floor(middle - value / peak * (kWaveHeight / 2.0 - 2)); };
  for (int x = 0; x < kPlotWidth; ++x) picture.fill(kLeft + x, y(columns[x].highest), 1, y(columns[x].lowest) - y(columns[x].highest) + 1, kWave);
  picture.upright_text(kLeft - 24, middle, "wave");
  picture.frame(kLeft, kWaveTop, kPlotWidth, kWaveHeight, kInk);
}

void draw_time_axis(Picture& picture, double seconds) {
  for (const Mark& mark : xfm::tool::even_marks(seconds, 10)) {
    const int x = kLeft + static_cast<int>(std::lround(mark.value / seconds * kPlotWidth));
    picture.fill(x, kBottom, 1, 7, kInk);
    picture.text(x, kBottom + 17, mark.text, Align::Centre);
  }
  picture.text(kLeft + kPlotWidth / 2.0, kBottom + 40, "time in seconds", Align::Centre);
}

void draw_frequency_axis(Picture& picture, double top) {
  constexpr int kApart = 15;  // labels nearer to each other than this would overlap
  int last = kBottom + kApart;
  for (const int frequency : {0, 100, 200, 500, 1000, 2000, 5000, 10000, 20000, 50000, 100000, 200000, 500000, 1000000, 2000000, 5000000}) {
    if (frequency > top) break;
    const int y = kBottom - 1 - static_cast<int>(std::lround(mel(frequency) / mel(top) * (kPlotHeight - 1)));
    picture.fill(kLeft - 7, y, 7, 1, kInk);
    if (last - y < kApart) continue;
    picture.text(kLeft - 12, y, std::to_string(frequency), Align::Right);
    last = y;
  }
  picture.upright_text(16, kTop + kPlotHeight / 2.0, "frequency in Hz (mel scale)");
}

void draw_colour_bar(Picture& picture, double top_level, double level_of_one) {
  for (int row = 0; row < kPlotHeight; ++row)
    picture.fill(kBarLeft, kTop + row, kBarWidth, 1, colour_of(static_cast<double>(kPlotHeight - 1 - row) / (kPlotHeight - 1)));
  picture.frame(kBarLeft, kTop, kBarWidth, kPlotHeight, kInk);
  const double top = top_level + level_of_one;
  for (double level = std::floor(top / 10) * 10; level > top - kRange; level -= 10) {
    const int y = kTop + static_cast<int>(std::lround((top - level) / kRange * (kPlotHeight - 1)));
    picture.fill(kBarLeft + kBarWidth, y, 6, 1, kInk);
    picture.text(kBarLeft + kBarWidth + 10, y, std::to_string(std::lround(level)));
  }
  picture.text(kBarLeft - 10, kTop - 16, "level in dB");
}

}  // namespace

int spectrogram_points(int rate) {
  int points = 64;
  while (points < 4096 && points < 0.03 * rate) points *= 2;
  return points;
}

std::string draw_spectrogram(SoundFile& file, const std::string& title, xfm::tool::PictureFormat format) {
  const std::vector<Column> columns = columns_of(file);
  float top_level = -100;
  for (const Column& column : columns) top_level = std::max(top_level, *std::ranges::max_element(column.levels));
  Picture picture(format, kWidth, kHeight);
  picture.text(kLeft, 26, title);
  draw_wave(picture, columns);
  draw_plot(picture, columns, top_level);
  draw_time_axis(picture, file.seconds());
  draw_frequency_axis(picture, file.rate() / 2.0);
  draw_colour_bar(picture, top_level, -20 * std::log10(file.gain()));
  return picture.bytes();
}
