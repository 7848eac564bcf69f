// Runs a recording through the library: prints how long it is, its strongest tones and what the transforms cost, and
// writes OUTPUT.png, its spectrogram, and OUTPUT-compressed.wav, what a twentieth of its lapped transform sounds like.
//   xfm_demo RECORDING.wav OUTPUT
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "lapped_transform.h"
#include "spectrogram.h"
#include "spectrum.h"

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

// The recording from its middle on, repeated if it is short.
std::vector<float> stretch(const Recording& recording, int points) {
  std::vector<float> samples;
  for (size_t at = recording.samples.size() / 2; samples.size() < static_cast<size_t>(points); ++at)
    samples.push_back(recording.samples[at % recording.samples.size()]);
  return samples;
}

void print_recording(const std::string& path, const Recording& recording) {
  std::printf("%s\n  %.3f s, %d channel%s, %d samples a second\n", path.c_str(), recording.seconds(),
              recording.channels, recording.channels == 1 ? "" : "s", recording.rate);
}

void print_tones(const Recording& recording) {
  std::printf("Strongest tones (mean level, 0 dB is a sine of full scale)\n");
  const std::vector<Tone> tones = strongest_tones(recording.samples, recording.rate, 5);
  if (tones.empty()) std::printf("  none: the recording is silent\n");
  for (const Tone& tone : tones) std::printf("  %8.1f Hz  %6.1f dB\n", tone.frequency, tone.level);
}

void print_times(const Recording& recording) {
  Dl_info library;  // the loader may have taken a copy for newer processors
  if (dladdr(reinterpret_cast<void*>(&xfmgenGetLibVersion), &library) != 0)
    std::printf("Time of one transform, by %s\n", std::filesystem::weakly_canonical(library.dli_fname).c_str());
  const auto line = [](const std::string& name, double time) { std::printf("  %-58s %9.1f ns\n", name.c_str(), time); };
  const std::vector<float> samples = stretch(recording, 4096);
  std::vector<Xfm32fc> complex(64), out(64);
  for (size_t n = 0; n < 64; ++n) complex[n] = {samples[2 * n], samples[2 * n + 1]};
  line("64 points real (xfmgDFTFwd_RToCCS_64_32f)",
       nanoseconds([&] { xfmgDFTFwd_RToCCS_64_32f(samples.data(), &out[0].re, xfmScaleNone); }));
  line("64 points complex (xfmgDFTFwd_CToC_64_32fc)",
       nanoseconds([&] { xfmgDFTFwd_CToC_64_32fc(complex.data(), out.data(), xfmScaleNone); }));
  for (const int points : {spectrogram_points(recording.rate), 4096}) {
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

constexpr double kLargestShare = 0.25, kSmallestShare = 0.05;  // of the coefficients

// What an audio codec does with the DCT-IV; every sample comes back when nothing is thrown away.
void print_lapped(const Recording& recording) {
  std::printf("Lapped transform, frames of %d coefficients (xfmgDCT4_32f)\n", LappedTransform::kFrame);
  constexpr double kRoundingOnly = 110;  // dB; single precision leaves about 135
  for (const double share : {kLargestShare, 0.1, kSmallestShare}) {
    const LappedReport report = lapped_report(recording.samples, share);
    if (share == kLargestShare) {
      std::printf("  all %zu coefficients kept: signal-to-noise ratio %.1f dB\n", report.coefficients, report.all);
      if (report.all < kRoundingOnly) throw std::runtime_error("the lapped transform does not give the recording back");
    }
    std::printf("  strongest %2.0f %% kept (%zu): %.1f dB\n", 100 * share, report.left, report.kept);
  }
}

void write_picture(const std::string& path, const Recording& recording, const std::string& name) {
  char title[200];
  std::snprintf(title, sizeof title, "%.60s  -  %.2f s, %d Hz, frames of %d samples", name.c_str(),
                recording.seconds(), recording.rate, spectrogram_points(recording.rate));
  const std::string png = spectrogram_png(recording, title);
  std::ofstream out(path, std::ios::binary);
  out.write(png.data(), static_cast<std::streamsize>(png.size()));
  out.close();
  if (!out) throw std::runtime_error(path + ": cannot be written");
  std::printf("Spectrogram: %s\n", path.c_str());
}

void write_compressed(const std::string& path, const Recording& recording) {
  LappedTransform lapped;
  std::vector<float> coefficients = lapped.analyse(recording.samples);
  keep_strongest(coefficients, kSmallestShare);
  write_wav(path, lapped.synthesise(coefficients, recording.samples.size()), recording.rate);
  std::printf("Sound of the strongest %.0f %%: %s\n", 100 * kSmallestShare, path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 3) throw std::runtime_error("usage: xfm_demo RECORDING.wav OUTPUT");
    const std::string output = argv[2];
    const Recording recording = read_wav(argv[1]);
    print_recording(argv[1], recording);
    print_tones(recording);
    print_times(recording);
    print_lapped(recording);
    write_compressed(output + "-compressed.wav", recording);
    write_picture(output + ".png", recording, std::filesystem::path(argv[1]).filename());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
