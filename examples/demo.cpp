// Runs a recording through the library: prints how long it is, its strongest tones and what the transforms cost, and
// writes OUTPUT.png, its spectrogram, and OUTPUT-compressed.wav, what a twentieth of its lapped transform sounds like.
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "examples/report.h"
#include "examples/spectrogram.h"
#include "examples/spectrum.h"
#include "tool/copies.h"
#include "tool/processor.h"
#include "tool/program.h"

namespace {

// Nanoseconds of one call: the median over rounds of the mean over calls.
template <class Call>
double nanoseconds(Call call) {
  constexpr int kRounds = 21;
  constexpr auto kRound = std::chrono::microseconds(500);
  using Clock = std::chrono::steady_clock;
  std::vector<double> rounds;
  for (int round = 0; round < kRounds; ++round) {
    long calls = 0;
    const auto start = Clock::now();
    auto now = start;
    do {
      for (int i = 0; i < 16; ++i) call();
      calls += 16;
      now = Clock::now();
    } while (now - start < kRound);
    rounds.push_back(std::chrono::duration<double, std::nano>(now - start).count() / static_cast<double>(calls));
  }
  std::nth_element(rounds.begin(), rounds.begin() + kRounds / 2, rounds.end());
  return rounds[kRounds / 2];
}

// The recording's first channel, repeated if it is short.
std::vector<float> stretch(SoundFile& file, size_t points) {
  Stretches sound(file, "Times");
  const long count = std::min(file.frames(), static_cast<long>(points));
  sound.move(0, count);
  std::vector<float> samples;
  while (samples.size() < points) samples.push_back(sound.channel(0)[samples.size() % static_cast<size_t>(count)]);
  return samples;
}

void print_times(SoundFile& file) {
  std::printf("Time of one transform\n");
  const auto line = [](const std::string& name, double time) { std::printf("  %-58s %9.1f ns\n", name.c_str(), time); };
  const std::vector<float> samples = stretch(file, 4096);
  std::vector<Xfm32fc> complex(64), out(64);
  for (size_t n = 0; n < 64; ++n) complex[n] = {samples[2 * n], samples[2 * n + 1]};
  line("64 points real (xfmgDFTFwd_RToCCS_64_32f)",
       nanoseconds([&] { xfmgDFTFwd_RToCCS_64_32f(samples.data(), &out[0].re, xfmScaleNone); }));
  line("64 points complex (xfmgDFTFwd_CToC_64_32fc)",
       nanoseconds([&] { xfmgDFTFwd_CToC_64_32fc(complex.data(), out.data(), xfmScaleNone); }));
  for (const int points : {spectrogram_points(file.rate()), 4096}) {
    LongTransform transform(points);
    std::vector<Xfm32fc> spectrum(static_cast<size_t>(transform.bins()));
    line(std::to_string(points) + " points real, in " + std::to_string(transform.calls()) + " calls of the library",
         nanoseconds([&] { transform.run(samples.data(), spectrum.data()); }));
  }
  XfmDCT4State_32f* state = nullptr;
  if (xfmgDCT4InitAlloc_32f(&state, 1024) != xfmStatusOk) throw std::runtime_error("no memory for the DCT-IV");
  std::vector<float> cosines(1024);
  line("1024 points DCT-IV (xfmgDCT4_32f)",
       nanoseconds([&] { xfmgDCT4_32f(samples.data(), cosines.data(), state); }));
  xfmgDCT4Free_32f(state);
}

void run(const std::string& recording, const std::string& output) {
  xfm::tool::require_avx();
  SoundFile file(recording);
  print_recording(file);
  const xfm::tool::Copy copy = xfm::tool::loaded_copy();
  std::printf("Library in use: %s of %s\n", copy.name.c_str(), copy.path.filename().c_str());
  print_tones(file);
  print_times(file);
  write_compressed(file, 0.05, output + "-compressed.wav");
  write_spectrogram(file, output + ".png");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Runs a recording through the library: its tones, the time of the transforms, its picture, what a twentieth of it sounds like.");
  std::string recording, output;
  app.add_option("RECORDING", recording, "a sound file of any kind; - is standard input")->required();
  app.add_option("OUTPUT", output, "writes OUTPUT.png and OUTPUT-compressed.wav")->required();
  app.callback([&] { run(recording, output); });
  return xfm::tool::run(app, argc, argv);
}
