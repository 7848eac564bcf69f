// The demo: its reader of recordings, its long transform, the tones it names, its pictures, and its program.
#include <gtest/gtest.h>
#include <png.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numbers>
#include <random>
#include <sstream>

#include "examples/canvas.h"
#include "examples/spectrogram.h"
#include "examples/spectrum.h"
#include "examples/wav.h"

namespace {

namespace fs = std::filesystem;

// Every case has a folder of its own, removed at its end.
class Demo : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "xfm_demo_XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  void TearDown() override { fs::remove_all(folder_); }
  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  std::string write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }

 private:
  fs::path folder_;
};

std::string little(uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i & 0xff);
  return text;
}

std::string chunk(const std::string& tag, const std::string& data) {
  return tag + little(data.size(), 4) + data + std::string(data.size() % 2, '\0');
}

struct WavFormat {
  unsigned encoding = 1, channels = 1, rate = 8000, bits = 16;
};

std::string wav(const WavFormat& format, const std::string& data) {
  const unsigned frame = format.channels * format.bits / 8;
  const std::string head = little(format.encoding, 2) + little(format.channels, 2) + little(format.rate, 4) +
                           little(format.rate * frame, 4) + little(frame, 2) + little(format.bits, 2);
  const std::string body = "WAVE" + chunk("fmt ", head) + chunk("LIST", "odd") + chunk("data", data);
  return "RIFF" + little(body.size(), 4) + body;
}

std::string bits_of(auto value) {
  uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof value);
  return little(bits, sizeof value);
}

std::string sines(int rate, double seconds, const std::vector<std::pair<double, double>>& tones) {
  std::string data;
  for (int n = 0; n < rate * seconds; ++n) {
    double value = 0;
    for (const auto& [frequency, amplitude] : tones)
      value += amplitude * std::sin(2 * std::numbers::pi * frequency * n / rate);
    data += little(static_cast<uint16_t>(static_cast<int16_t>(std::lround(value * 32767))), 2);
  }
  return data;
}

TEST_F(Demo, ReadsEveryEncoding) {
  struct Case {
    WavFormat format;
    std::string data;
  };
  const Case cases[] = {  // 0.5, -0.25 in each
      {{1, 1, 8000, 8}, "\xc0\x60"},
      {{1, 1, 8000, 16}, little(0x4000, 2) + little(0xe000, 2)},
      {{1, 1, 8000, 24}, little(0x400000, 3) + little(0xe00000, 3)},
      {{1, 1, 8000, 32}, little(0x40000000, 4) + little(0xe0000000, 4)},
      {{3, 1, 8000, 32}, bits_of(0.5f) + bits_of(-0.25f)},
      {{3, 1, 8000, 64}, bits_of(0.5) + bits_of(-0.25)},
      {{1, 2, 8000, 16}, little(0x6000, 2) + little(0x2000, 2) + little(0xc000, 2) + little(0, 2)},
  };
  for (const Case& one : cases) {
    const Recording recording = read_wav(write("good.wav", wav(one.format, one.data)));
    EXPECT_EQ(recording.rate, 8000);
    EXPECT_EQ(recording.channels, static_cast<int>(one.format.channels));
    EXPECT_EQ(recording.samples, (std::vector<float>{0.5f, -0.25f})) << one.format.encoding << ' ' << one.format.bits;
  }
}

TEST_F(Demo, WritesWhatItReads) {
  const std::vector<float> samples = {0, 0.5f, -1, 0.25f, 3, -3};
  write_wav(path("written.wav"), samples, 44100);
  const Recording recording = read_wav(path("written.wav"));
  EXPECT_EQ(recording.rate, 44100);
  EXPECT_EQ(recording.samples, (std::vector<float>{0, 0.5f, -1, 0.25f, 32767 / 32768.0f, -1}));
  EXPECT_THROW(write_wav(path("no/folder.wav"), samples, 44100), std::runtime_error);
}

TEST_F(Demo, RefusesWhatIsNoRecordingInOneLine) {
  const std::string good = wav({}, sines(8000, 0.1, {{440, 0.5}}));
  const std::pair<std::string, const char*> cases[] = {
      {path("absent.wav"), "cannot be opened"},
      {path("."), "is a folder"},
      {write("empty.wav", ""), "is empty"},
      {write("text.wav", "no sound at all"), "is not a WAV file"},
      {write("header.wav", good.substr(0, 12)), "without sound data"},
      {write("cut.wav", good.substr(0, 30)), "without sound data"},
      {write("silent.wav", wav({}, "")), "holds no sound"},
      {write("format.wav", wav({85, 2, 44100, 16}, "abcd")), "not supported"},
      {write("bits.wav", wav({1, 1, 44100, 12}, "abcd")), "not supported"},
      {write("rate.wav", wav({1, 1, 0, 16}, "abcd")), "damaged"},
      {write("channels.wav", wav({1, 0, 8000, 16}, "abcd")), "damaged"},
      {write("nan.wav", wav({3, 1, 8000, 32}, bits_of(NAN))), "not a number"},
  };
  for (const auto& [file, message] : cases) {
    const std::string command =
        std::string(XFM_DEMO) + " " + file + " " + path("out") + " >" + path("said") + " 2>" + path("errors");
    EXPECT_NE(std::system(command.c_str()), 0) << file;
    std::ostringstream errors;
    errors << std::ifstream(path("errors")).rdbuf();
    EXPECT_TRUE(errors.str().starts_with(file + ": ")) << errors.str();
    EXPECT_NE(errors.str().find(message), std::string::npos) << errors.str();
    EXPECT_EQ(errors.str().find('\n'), errors.str().size() - 1) << errors.str();
    EXPECT_EQ(fs::file_size(path("said")), 0u) << file;
    EXPECT_FALSE(fs::exists(path("out.png")) || fs::exists(path("out-compressed.wav"))) << file;
  }
}

TEST_F(Demo, AnUnfinishedFileIsReadAsFarAsItGoes) {
  const std::string whole = wav({}, sines(8000, 0.1, {{440, 0.5}}));
  EXPECT_EQ(read_wav(write("cut.wav", whole.substr(0, whole.size() - 601))).samples.size(), 800u - 301u);
}

TEST(LongTransform, IsTheTransformByItsDefinition) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> uniform(-1, 1);
  for (const int points : {64, 128, 256, 512, 1024, 2048, 4096}) {
    std::vector<float> samples(static_cast<size_t>(points));
    for (float& sample : samples) sample = uniform(random);
    LongTransform transform(points);
    std::vector<Xfm32fc> spectrum(static_cast<size_t>(transform.bins()));
    transform.run(samples.data(), spectrum.data());
    double largest = 0, error = 0;
    for (int k = 0; k <= points / 2; ++k) {
      std::complex<double> sum = 0;
      for (int n = 0; n < points; ++n) {
        const double angle = -2 * std::numbers::pi * (static_cast<long>(n) * k % points) / points;
        sum += static_cast<double>(samples[n]) * std::polar(1.0, angle);
      }
      largest = std::max(largest, std::abs(sum));
      error = std::max(error, std::abs(sum - std::complex<double>(spectrum[k].re, spectrum[k].im)));
    }
    EXPECT_LT(error, 4e-7 * largest) << points;
  }
  for (const int points : {0, 32, 96, 8192}) EXPECT_THROW(LongTransform{points}, std::invalid_argument) << points;
}

TEST_F(Demo, NamesTheTonesOfARecording) {
  const Recording recording =
      read_wav(write("tones.wav", wav({1, 1, 44100, 16}, sines(44100, 2, {{440, 0.5}, {1234.5, 0.25}, {9000, 0.01}}))));
  const std::vector<Tone> tones = strongest_tones(recording.samples, recording.rate, 3);
  ASSERT_EQ(tones.size(), 3u);
  const double frequencies[] = {440, 1234.5, 9000}, levels[] = {-6.0, -12.0, -40.0};
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(tones[i].frequency, frequencies[i], 0.5);
    EXPECT_NEAR(tones[i].level, levels[i], 0.3);
  }
  EXPECT_TRUE(strongest_tones(std::vector<float>(5000), 8000, 3).empty());
}

struct Picture {
  unsigned width = 0, height = 0;
  std::vector<uint8_t> rgb;
  const uint8_t* at(unsigned x, unsigned y) const { return &rgb[3 * (static_cast<size_t>(y) * width + x)]; }
};

Picture decode(const std::string& bytes) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, bytes.data(), bytes.size())) return {};
  image.format = PNG_FORMAT_RGB;
  Picture picture{image.width, image.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
  if (!png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr)) return {};
  return picture;
}

TEST(Canvas, APictureIsReadBackPixelByPixel) {
  Canvas::Palette palette{};
  for (int i = 0; i < 256; ++i)
    palette[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 7)};
  constexpr int kWidth = 300, kHeight = 400;  // more bytes than one stored block holds
  Canvas canvas(kWidth, kHeight, 0);
  const auto colour = [](int x, int y) { return static_cast<Canvas::Colour>(x * 31 + y * 17); };
  for (int y = -1; y <= kHeight; ++y)
    for (int x = -1; x <= kWidth; ++x) canvas.set(x, y, colour(x, y));
  const Picture picture = decode(canvas.png(palette));
  ASSERT_EQ(picture.width, 300u);
  ASSERT_EQ(picture.height, 400u);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      ASSERT_EQ(std::memcmp(picture.at(x, y), palette[colour(x, y)].data(), 3), 0) << x << ' ' << y;
}

// A rising tone is a bright line that climbs from left to right; above and below it is dark.
TEST_F(Demo, TheSpectrogramShowsARisingTone) {
  Recording recording{16000, 1, {}};
  double phase = 0;
  for (int n = 0; n < 32000; ++n) {
    recording.samples.push_back(static_cast<float>(0.5 * std::sin(phase)));
    phase += 2 * std::numbers::pi * (1000 + 5000.0 * n / 32000) / 16000;
  }
  const Picture picture = decode(spectrogram_png(recording, "rising tone"));
  ASSERT_EQ(picture.width, 1200u);
  ASSERT_EQ(picture.height, 720u);
  unsigned before = picture.height;
  for (const unsigned x : {200u, 400u, 600u, 800u, 1000u}) {
    unsigned bright = 0, bright_row = 0;
    for (unsigned y = 182; y < 648; ++y) {
      if (picture.at(x, y)[0] < 200) continue;
      ++bright;
      bright_row = y;
    }
    EXPECT_GT(bright, 0u) << x;
    EXPECT_LT(bright, 60u) << x;
    EXPECT_LT(bright_row, before) << x;
    before = bright_row;
  }
}

TEST_F(Demo, OddRecordingsGiveAPictureToo) {
  const std::pair<std::string, WavFormat> cases[] = {{little(0x4000, 2), {1, 1, 1, 16}},
                                                     {std::string(2000, '\0'), {1, 1, 8000, 16}},
                                                     {sines(384000, 0.01, {{1000, 0.5}}), {1, 1, 384000, 16}}};
  for (const auto& [data, format] : cases) {
    const std::string command = std::string(XFM_DEMO) + " " + write("odd.wav", wav(format, data)) + " " +
                                path("out") + " >" + path("said");
    EXPECT_EQ(std::system(command.c_str()), 0) << format.rate;
    std::ostringstream png;
    png << std::ifstream(path("out.png"), std::ios::binary).rdbuf();
    EXPECT_EQ(decode(png.str()).width, 1200u) << format.rate;
    EXPECT_EQ(read_wav(path("out-compressed.wav")).samples.size(), data.size() / 2) << format.rate;
  }
}

}  // namespace
