// Recordings: reading and writing them, the long and the lapped transform, levels and tones, pictures by what is in them,
// and the demo on good and bad files.
#include <png.h>
#include <sndfile.h>

#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <numbers>
#include <random>

#include "examples/compression.h"
#include "examples/lapped_transform.h"
#include "examples/sound_file.h"
#include "examples/spectrogram.h"
#include "examples/spectrum.h"
#include "examples/tones.h"
#include "tests/programs.h"

namespace {

using namespace xfm::test;
constexpr double kPi = std::numbers::pi;

struct Format {
  int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT, rate = 8000, channels = 1;
};

class Sound : public ProgramTest {
 protected:
  // A recording of sample(n, channel), n from 0.
  std::string record(const std::string& name, const Format& format, long frames, const std::function<double(long, int)>& sample) const {
    SF_INFO info{};
    info.samplerate = format.rate, info.channels = format.channels, info.format = format.format;
    SNDFILE* const file = sf_open(path(name).c_str(), SFM_WRITE, &info);
    EXPECT_NE(file, nullptr) << name << ": " << sf_strerror(nullptr);
    std::vector<double> values;
    for (long n = 0; n < frames; ++n)
      for (int c = 0; c < format.channels; ++c) values.push_back(sample(n, c));
    sf_write_double(file, values.data(), static_cast<sf_count_t>(values.size()));
    sf_close(file);
    return path(name);
  }
  std::string demo(const std::string& recording) const { return XFM_DEMO " '" + recording + "' out"; }
};

double sine(double frequency, double rate, long n) { return std::sin(2 * kPi * frequency * static_cast<double>(n) / rate); }

TEST_F(Sound, ReadsEveryFormatAsTheSameSound) {
  const std::pair<int, double> formats[] = {  // and how far samples may be off
      {SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1 / 127.0},      {SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1 / 32000.0},
      {SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, 1e-6},         {SF_FORMAT_WAV | SF_FORMAT_PCM_32, 1e-6},
      {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 3e-7},            {SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 3e-7},
      {SF_FORMAT_WAV | SF_FORMAT_ULAW, 0.05},             {SF_FORMAT_RF64 | SF_FORMAT_PCM_16, 1 / 32000.0},
      {SF_FORMAT_W64 | SF_FORMAT_PCM_16, 1 / 32000.0},    {SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 1 / 32000.0},
      {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1 / 32000.0},   {SF_FORMAT_OGG | SF_FORMAT_VORBIS, 0.1},
      {SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 0.1}};
  for (const auto& [format, tolerance] : formats) {
    SoundFile file(record("sound", {format, 44100, 2}, 30000, [](long n, int c) { return (c + 1) * 0.3 * sine(440, 44100, n); }));
    EXPECT_EQ(file.rate(), 44100);
    EXPECT_EQ(file.channels(), 2);
    EXPECT_NEAR(file.peak(), 0.6, tolerance) << file.encoding();
    EXPECT_NEAR(static_cast<double>(file.frames()), 30000, format & SF_FORMAT_MPEG ? 3000 : 0) << file.encoding();
    Stretches sound(file, "");
    sound.move(file.frames() - 20000, 100);
    for (size_t i = 0; file.frames() == 30000 && i < 100; ++i)
      EXPECT_NEAR(sound.channel(1)[i], 0.6 * sine(440, 44100, 10000 + static_cast<long>(i)), 2 * tolerance) << file.encoding();
  }
}

TEST_F(Sound, StretchesAreSilentBeyondTheEnds) {
  SoundFile file(record("ramp.wav", {}, 20000, [](long n, int) { return (n + 1) / 32768.0; }));
  Stretches sound(file, "");
  for (const long first : {-3L, 0L, 0L, 5000L, 16380L, 19990L, 30000L}) {
    sound.move(first, 20);
    for (long i = 0; i < 20; ++i) EXPECT_EQ(sound.channel(0)[i], first + i >= 0 && first + i < 20000 ? static_cast<float>((first + i + 1) / 32768.0) : 0) << first << ' ' << i;
  }
}

// An unfinished file is read as far as it goes, a sound beyond full scale is kept.
TEST_F(Sound, WritesWhatItReads) {
  SoundFile loud(record("loud.wav", {}, 5000, [](long n, int) { return 3 * sine(440, 8000, n); }));
  SoundWriter writer(path("copy.wav"), loud);
  std::vector<float> samples(5000);
  loud.rewind();
  ASSERT_EQ(loud.read(samples.data(), 6000), 5000u);
  writer.write(samples);
  EXPECT_FALSE(fs::exists(path("copy.wav")));
  writer.commit();
  EXPECT_NEAR(SoundFile(path("copy.wav")).peak(), 3, 1e-3);
  record("whole.wav", {SF_FORMAT_WAV | SF_FORMAT_PCM_16}, 800, [](long n, int) { return sine(440, 8000, n); });
  const std::string whole = contents(path("whole.wav"));
  EXPECT_EQ(SoundFile(write("cut.wav", whole.substr(0, whole.size() - 601))).frames(), 800 - 301);
}

TEST(LongTransform, IsTheTransformByItsDefinition) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> uniform(-1, 1);
  for (const int points : {64, 128, 256, 512, 1024, 2048, 4096}) {
    std::vector<float> samples(static_cast<size_t>(points));
    for (float& sample : samples) sample = uniform(random);
    LongTransform transform(points);
    PowerSpectrum power(points);
    std::vector<Xfm32fc> spectrum(static_cast<size_t>(transform.bins()));
    transform.run(samples.data(), spectrum.data());
    double largest = 0, error = 0, power_error = 0;
    for (int k = 0; k <= points / 2; k += points > 512 ? 7 : 1) {
      std::complex<double> sum = 0, windowed = 0;
      for (int n = 0; n < points; ++n) {
        const std::complex<double> term = static_cast<double>(samples[n]) * std::polar(1.0, -2 * kPi * (static_cast<long>(n) * k % points) / points);
        sum += term;
        windowed += term * ((1 - std::cos(2 * kPi * n / points)) * 2.0 / points);  // Hann, 2 over its sum
      }
      largest = std::max(largest, std::abs(sum));
      error = std::max(error, std::abs(sum - std::complex<double>(spectrum[k].re, spectrum[k].im)));
      power_error = std::max(power_error, std::abs(power.of(samples)[k] - std::norm(windowed)) * points);
    }
    EXPECT_LT(error, 4e-7 * largest) << points;
    EXPECT_LT(power_error, 3e-5) << points;
  }
  for (const int points : {0, 32, 96, 8192}) EXPECT_THROW(LongTransform{points}, std::invalid_argument) << points;
}

TEST(LappedTransform, IsTheTransformByItsDefinition) {
  constexpr int N = LappedTransform::kFrame;
  std::vector<float> x(2 * N), y(N);
  for (int i = 0; i < 2 * N; ++i) x[i] = static_cast<float>(std::sin(0.03 * i) + 0.3 * std::sin(0.0007 * i * i));
  LappedTransform().analyse(x.data(), y.data());
  for (int k : {0, 1, 5, 77, 512, 1023}) {
    double sum = 0;
    for (int i = 0; i < 2 * N; ++i) sum += std::sin(kPi * (i + 0.5) / (2 * N)) * x[i] * std::cos(kPi / N * (i + 0.5 + N / 2.0) * (k + 0.5));
    EXPECT_NEAR(y[k], sum, 2e-4) << k;
  }
}

TEST_F(Sound, NothingIsLostWhenAllCoefficientsAreKept) {
  for (const long frames : {1L, 1000L, 1024L, 5000L, 70001L}) {
    SoundFile file(record("voice.wav", {.channels = 2}, frames, [](long n, int c) {
      double sum = 1e-3 * std::sin(n * 12.9898 + 0.1 * n * n);
      for (int k = 1; k < 9; ++k) sum += sine(173 * k, 48000, n) / (4 * k);
      return sum * (0.6 + 0.4 * std::sin(9e-4 * n)) / (c + 1);
    }));
    const CompressionReport report = compress(file, {0.25, 0.05}, nullptr);
    EXPECT_GT(report.all, 125) << frames;  // rounding of single precision
    EXPECT_EQ(report.shares[1].kept, static_cast<uint64_t>(0.05 * static_cast<double>(report.coefficients)));
    EXPECT_LE(report.shares[1].ratio, report.shares[0].ratio) << frames;
    EXPECT_GT(report.shares[1].ratio, frames > 70000 ? 20 : 5);
  }
}

TEST(StrongestCount, KeepsTheStrongestAndOfEqualsTheFirst) {
  const std::vector<float> values = {1, -5, 0, 3, 3, 3, -2, 8};
  StrongestCount counted;
  counted.add(values);
  for (const auto& [share, right] : {std::pair{0.0, "00000000"}, {0.25, "01000001"}, {0.5, "01011001"}, {1.0, "11111111"}}) {
    StrongestCount::Filter filter(counted, share);
    std::string kept;
    for (const float value : values) kept += filter.keeps(value) ? '1' : '0';
    EXPECT_EQ(kept, right) << share;
  }
}

// A sine of full scale has 0 dB whatever its length, its frequency's place between bins, and how many channels carry it.
TEST_F(Sound, LevelsFollowTheirDefinition) {
  for (const int rate : {8000, 44100, 192000})
    for (const double seconds : {0.05, 0.1, 0.5, 1.0, 3.7})
      for (const double frequency : {440.0, 1234.5}) {
        const Format format{.rate = rate, .channels = 2};
        SoundFile file(record("sine.wav", format, std::lround(seconds * rate), [&](long n, int c) { return (c == 0 ? 1 : -1) * sine(frequency, rate, n); }));
        const std::vector<Tone> tones = strongest_tones(file, 1);
        ASSERT_EQ(tones.size(), 1u);
        const double bin = rate / std::min(4096.0, std::exp2(std::floor(std::log2(seconds * rate))));
        if (frequency < 4 * bin) continue;
        EXPECT_NEAR(tones[0].level, 0, 0.1) << rate << ' ' << seconds;
        EXPECT_NEAR(tones[0].frequency, frequency, 0.03 * bin) << rate << ' ' << seconds;
      }
  SoundFile file(record("three.wav", {.rate = 44100}, 88200, [](long n, int) {
    return 0.5 * sine(440, 44100, n) + 0.25 * sine(1234.5, 44100, n) + 0.01 * sine(9000, 44100, n);
  }));
  const std::vector<Tone> tones = strongest_tones(file, 3);
  ASSERT_EQ(tones.size(), 3u);
  const double levels[] = {-6.02, -12.04, -40};
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(tones[i].level, levels[i], 0.05);
}

struct Image {
  unsigned width = 0, height = 0;
  std::vector<uint8_t> rgb;
  [[nodiscard]] std::vector<int> at(int x, int y) const {
    const uint8_t* const p = &rgb[3 * (static_cast<size_t>(y) * width + static_cast<size_t>(x))];
    return {p[0], p[1], p[2]};
  }
  [[nodiscard]] bool ink(int x, int y) const { return at(x, y) == std::vector<int>{30, 30, 30}; }
};

Image decode(const std::string& bytes) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return {};
  image.format = PNG_FORMAT_RGB;
  Image result{image.width, image.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
  if (!png_image_finish_read(&image, nullptr, result.rgb.data(), 0, nullptr)) return {};
  return result;
}

using namespace spectrogram;

Image picture(SoundFile& file) { return decode(draw_spectrogram(file, "title", xfm::tool::PictureFormat::Png)); }

double row_of(double frequency, double top) { return kBottom - 1 - std::log(1 + frequency / 700) / std::log(1 + top / 700) * (kPlotHeight - 1); }

// Two steady tones, 40 dB apart: axes, colours and bar.
TEST_F(Sound, PictureSaysWhenWhereAndHowStrong) {
  SoundFile file(record("tones.wav", {.rate = 16000}, 40000, [](long n, int) { return sine(1000, 16000, n) + 0.01 * sine(5000, 16000, n); }));
  const Image image = picture(file);
  ASSERT_EQ(image.width, 1200u);
  ASSERT_EQ(image.height, 720u);
  std::vector<int> times, rows, levels, right_times, right_rows;
  for (int x = 0; x < kWidth; ++x)
    if (image.ink(x, kBottom + 5)) times.push_back(x);
  for (int mark = 0; mark <= 5; ++mark) right_times.push_back(kLeft + static_cast<int>(std::lround(mark * 0.5 / 2.5 * kPlotWidth)));
  EXPECT_EQ(times, right_times);
  for (int y = kBottom; y >= kTop; --y)
    if (image.ink(kLeft - 5, y)) rows.push_back(y);
  for (const double frequency : {0, 100, 200, 500, 1000, 2000, 5000}) right_rows.push_back(static_cast<int>(std::lround(row_of(frequency, 8000))));
  EXPECT_EQ(rows, right_rows);
  for (int y = kTop; y < kBottom; ++y)
    if (image.ink(kBarLeft + kBarWidth + 4, y)) levels.push_back(y);
  ASSERT_EQ(levels.size(), 8u);
  for (size_t i = 1; i < levels.size(); ++i) EXPECT_NEAR(levels[i] - levels[i - 1], (kPlotHeight - 1) / 8.0, 1);
  // The tones have the colours that the bar has at 0 and at -40 dB; between and above them it is black.
  const auto near = [&](std::vector<int> a, std::vector<int> b, int most) {
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], most);
  };
  const int middle = kLeft + kPlotWidth / 2, bar = kBarLeft + kBarWidth / 2;
  near(image.at(middle, static_cast<int>(std::lround(row_of(1000, 8000)))), image.at(bar, kTop), 6);
  near(image.at(middle, static_cast<int>(std::lround(row_of(5000, 8000)))), image.at(bar, kTop + kPlotHeight / 2), 20);
  for (const double frequency : {300.0, 2500.0, 7500.0}) near(image.at(middle, static_cast<int>(row_of(frequency, 8000))), {0, 0, 8}, 0);
  // The wave fills its band.
  EXPECT_EQ(image.at(middle, kWaveTop + kWaveHeight / 2), (std::vector<int>{70, 90, 160}));
}

// A rising tone climbs as its frequency says; a click that lasts a tenth of a column is seen wherever it falls.
TEST_F(Sound, PictureMissesNothing) {
  double phase = 0;
  SoundFile rising(record("rising.wav", {.rate = 16000}, 32000, [&](long n, int) {
    phase += 2 * kPi * (1000 + 5000.0 * n / 32000) / 16000;
    return 0.5 * std::sin(phase);
  }));
  const Image image = picture(rising);
  for (const int x : {200, 400, 600, 800, 1000}) {
    const double frequency = 1000 + 5000.0 * (x - kLeft) / kPlotWidth;
    int brightest = kTop;
    for (int y = kTop; y < kBottom; ++y)
      if (image.at(x, y)[0] + image.at(x, y)[1] > image.at(x, brightest)[0] + image.at(x, brightest)[1]) brightest = y;
    EXPECT_NEAR(brightest, row_of(frequency, 8000), 3) << x;
  }
  constexpr long kFrames = 2000 * kPlotWidth;
  SoundFile clicks(record("clicks.wav", {}, kFrames, [](long n, int) {
    const long column = n / 2000, at = n % 2000;
    return column % 100 == 50 && at >= 1200 + column / 2 && at < 1400 + column / 2 ? sine(1000, 8000, n) : 0;
  }));
  const Image seen = picture(clicks);
  const int row = static_cast<int>(std::lround(row_of(1000, 4000)));
  for (int column = 50; column < kPlotWidth; column += 100) {
    EXPECT_GT(seen.at(kLeft + column, row)[0], 200) << column;
    EXPECT_LT(seen.at(kLeft + column - 5, row)[0], 60) << column;
  }
}

TEST_F(Sound, DemoSaysWhatIsOddAboutARecording) {
  struct Case {
    const char* says;
    Format format;
    long frames;
    std::function<double(long, int)> sample;
  };
  const Case cases[] = {
      {"silent: every sample is 0", {}, 5000, [](long, int) { return 0; }},
      {"the recording is a constant", {}, 5000, [](long, int) { return 0.5; }},
      {"constant part 0.5 (-6.0 dB)", {}, 5000, [](long, int) { return 0.5; }},
      {"opposite phase", {.channels = 2}, 8000, [](long n, int c) { return (c ? -1 : 1) * sine(440, 8000, n); }},
      {"440.0 Hz     0.0 dB", {.channels = 2}, 8000, [](long n, int c) { return (c ? -1 : 1) * sine(440, 8000, n); }},
      {"440.0 Hz   600.0 dB", {}, 8000, [](long n, int) { return 1e30 * sine(440, 8000, n); }},
      {"beyond full scale, which is 1: to 3e+38", {}, 8000, [](long n, int) { return n == 4000 ? 3e38 : 0.1; }},
      {"shorter than 64 samples", {.rate = 1}, 1, [](long, int) { return 0.5; }},
      {"1000.0 Hz", {.rate = 384000}, 4000 * 4, [](long n, int) { return sine(1000, 384000, n); }},
  };
  for (const Case& one : cases) {
    const Ended ended = run(demo(record("odd.wav", one.format, one.frames, one.sample)));
    EXPECT_EQ(ended.status, 0) << one.says << ended.errors;
    EXPECT_NE(ended.out.find(one.says), std::string::npos) << one.says << '\n' << ended.out;
    EXPECT_EQ(ended.out.find("nan"), std::string::npos) << ended.out;
    EXPECT_EQ(decode(contents(path("out.png"))).width, 1200u) << one.says;
    EXPECT_EQ(SoundFile(path("out-compressed.wav")).frames(), one.frames) << one.says;
  }
}

TEST_F(Sound, DemoRefusesInOneLineAndLeavesFilesAlone) {
  const std::string good = contents(record("good.wav", {SF_FORMAT_WAV | SF_FORMAT_PCM_16}, 800, [](long n, int) { return sine(440, 8000, n); }));
  const auto nan = [](long n, int) { return n == 7 ? std::numeric_limits<double>::quiet_NaN() : 0.5; };
  const std::pair<std::string, const char*> cases[] = {
      {path("absent.wav"), "cannot be opened"},
      {path("."), "is a folder"},
      {write("empty.wav", ""), "is empty"},
      {write("text.wav", "no sound at all"), "cannot be read as sound"},
      {write("header.wav", good.substr(0, 12)), "cannot be read as sound"},
      {write("cut.wav", good.substr(0, 30)), "cannot be read as sound"},
      {write("silent.wav", good.substr(0, 44)), ""},
      {record("nan.wav", {}, 100, nan), "sample 7 is not a number"},
  };
  write("out.png", "as it was");
  write("out-compressed.wav", "as it was");
  const size_t before = files();
  for (const auto& [file, message] : cases) {
    const Ended ended = run(demo(file));
    EXPECT_NE(ended.status, 0) << file;
    EXPECT_TRUE(ended.one_line_of_error()) << ended.errors;
    EXPECT_NE(ended.errors.find(file + ": " + message), std::string::npos) << ended.errors;
    EXPECT_EQ(ended.out, "") << file;
  }
  for (const char* command : {XFM_DEMO " good.wav absent/out", XFM_DEMO, XFM_DEMO " good.wav out more", "cat good.wav | TMPDIR=/absent " XFM_DEMO " - out"}) {
    const Ended ended = run(command);
    EXPECT_NE(ended.status, 0) << command;
    EXPECT_TRUE(ended.one_line_of_error()) << command << ended.errors;
  }
  run("ln -sf /dev/full full.png; ln -sf /dev/full full-compressed.wav");
  EXPECT_NE(run(XFM_DEMO " good.wav full").errors.find("full-compressed.wav: cannot be written: No space left"), std::string::npos);
  EXPECT_TRUE(fs::is_symlink(path("full.png")) && fs::is_character_file("/dev/full"));
  EXPECT_NE(run(XFM_DEMO " good.wav new >/dev/full").errors.find("standard output cannot be written"), std::string::npos);
  for (const char* name : {"out.png", "out-compressed.wav"}) EXPECT_TRUE(contents(path(name)) == "as it was") << name;
  EXPECT_EQ(files(), before + 4);  // the links, and what was made while nobody listened
}

// What memory takes does not follow the recording's length, and a pipe is as good as a file.
TEST_F(Sound, DemoTakesPipesAndLongRecordings) {
  const std::string file = record("long.wav", {SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2}, 44100L * 100, [](long n, int) { return 0.5 * sine(440, 44100, n); });
  const Ended by_name = run("exec " + demo(file));
  EXPECT_EQ(by_name.status, 0) << by_name.errors;
  EXPECT_LT(by_name.kilobytes, 90000);
  const std::string picture = contents(path("out.png")), sound = contents(path("out-compressed.wav"));
  for (const char* command : {"cat long.wav | " XFM_DEMO " - out", XFM_DEMO " <(cat long.wav) out", "mkfifo pipe; cat long.wav >pipe & " XFM_DEMO " pipe out", XFM_DEMO " - out <long.wav"}) {
    fs::remove(path("out.png")), fs::remove(path("out-compressed.wav"));
    EXPECT_EQ(run(command).status, 0) << command;
    EXPECT_TRUE(contents(path("out-compressed.wav")) == sound) << command;
    EXPECT_EQ(decode(contents(path("out.png"))).width, 1200u) << command;
  }
}

}  // namespace
