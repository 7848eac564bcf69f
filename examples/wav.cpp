#include "wav.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <stdexcept>

namespace {

using Bytes = std::span<const unsigned char>;

enum Encoding : unsigned { kPcm = 1, kFloat = 3, kExtensible = 0xfffe };

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw std::runtime_error(path + ": " + reason);
}

std::vector<unsigned char> read_bytes(const std::string& path) {
  if (std::filesystem::is_directory(path)) refuse(path, "is a folder, not a WAV file");
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) refuse(path, std::string("cannot be opened: ") + std::strerror(errno));
  std::vector<unsigned char> bytes;
  constexpr size_t kStep = 1 << 20;
  for (size_t got = kStep; got == kStep;) {
    const size_t size = bytes.size();
    bytes.resize(size + kStep);
    got = std::fread(bytes.data() + size, 1, kStep, file.get());
    bytes.resize(size + got);
  }
  if (std::ferror(file.get())) refuse(path, std::string("cannot be read: ") + std::strerror(errno));
  if (bytes.empty()) refuse(path, "is empty");
  return bytes;
}

// A little-endian number of one to eight bytes.
uint64_t number(Bytes bytes) {
  uint64_t value = 0;
  for (size_t i = bytes.size(); i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

struct Format {
  unsigned encoding = 0, channels = 0, rate = 0, bits = 0;
};

Format read_format(Bytes chunk) {
  Format format;
  if (chunk.size() < 16) return format;
  format.encoding = static_cast<unsigned>(number(chunk.subspan(0, 2)));
  format.channels = static_cast<unsigned>(number(chunk.subspan(2, 2)));
  format.rate = static_cast<unsigned>(number(chunk.subspan(4, 4)));
  format.bits = static_cast<unsigned>(number(chunk.subspan(14, 2)));
  if (format.encoding == kExtensible && chunk.size() >= 26)
    format.encoding = static_cast<unsigned>(number(chunk.subspan(24, 2)));
  return format;
}

bool is_known(const Format& format) {
  const bool whole_bytes = format.bits % 8 == 0 && format.bits >= 8;
  if (format.encoding == kPcm) return whole_bytes && format.bits <= 32;
  return format.encoding == kFloat && (format.bits == 32 || format.bits == 64);
}

float sample(const Format& format, Bytes bytes) {
  const uint64_t value = number(bytes);
  if (format.encoding == kFloat && format.bits == 64) {
    double number;
    std::memcpy(&number, &value, sizeof number);
    return static_cast<float>(number);
  }
  if (format.encoding == kFloat) {
    float number;
    std::memcpy(&number, &value, sizeof number);
    return number;
  }
  if (format.bits == 8) return (static_cast<float>(value) - 128) / 128;  // 8 bits have no sign
  const auto left_aligned = static_cast<int32_t>(static_cast<uint32_t>(value) << (32 - format.bits));
  return static_cast<float>(left_aligned) / 2147483648.0f;
}

std::vector<float> read_samples(const std::string& path, const Format& format, Bytes data) {
  const size_t width = format.bits / 8, frame = width * format.channels;
  std::vector<float> samples(data.size() / frame);
  for (size_t i = 0; i < samples.size(); ++i) {
    float sum = 0;
    for (size_t channel = 0; channel < format.channels; ++channel)
      sum += sample(format, data.subspan(i * frame + channel * width, width));
    samples[i] = sum / static_cast<float>(format.channels);
    if (!std::isfinite(samples[i])) refuse(path, "sample " + std::to_string(i) + " is not a number");
  }
  return samples;
}

}  // namespace

Recording read_wav(const std::string& path) {
  const std::vector<unsigned char> file = read_bytes(path);
  const Bytes bytes(file);
  const auto is = [&](size_t at, const char* tag) {
    return at + 4 <= bytes.size() && std::memcmp(bytes.data() + at, tag, 4) == 0;
  };
  if (!is(0, "RIFF") || !is(8, "WAVE")) refuse(path, "is not a WAV file");
  Format format;
  for (size_t at = 12; at + 8 <= bytes.size();) {
    const size_t rest = bytes.size() - at - 8;
    const size_t size = number(bytes.subspan(at + 4, 4));
    const Bytes chunk = bytes.subspan(at + 8, std::min(size, rest));  // a cut or streamed file ends early
    if (is(at, "fmt ")) format = read_format(chunk);
    if (is(at, "data")) {
      if (format.channels == 0 || format.rate == 0 || format.rate > 10000000) refuse(path, "its WAV header is damaged");
      if (!is_known(format))
        refuse(path, "the encoding " + std::to_string(format.encoding) + " of " + std::to_string(format.bits) +
                         " bits is not supported (PCM of 8 to 32 bits and floating point are)");
      Recording recording{static_cast<int>(format.rate), static_cast<int>(format.channels),
                          read_samples(path, format, chunk)};
      if (recording.samples.empty()) refuse(path, "holds no sound");
      return recording;
    }
    if (size > rest) break;
    at += 8 + size + size % 2;
  }
  refuse(path, "is a WAV file without sound data");
}

void write_wav(const std::string& path, const std::vector<float>& samples, int rate) {
  std::string file;
  const auto append = [&](uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) file += static_cast<char>(value >> 8 * i & 0xff);
  };
  const auto bytes = static_cast<uint32_t>(2 * samples.size());
  file += "RIFF";
  append(36 + bytes, 4);
  file += "WAVEfmt ";
  append(16, 4);
  append(kPcm, 2);
  append(1, 2);
  append(static_cast<uint32_t>(rate), 4);
  append(static_cast<uint32_t>(2 * rate), 4);
  append(2, 2);
  append(16, 2);
  file += "data";
  append(bytes, 4);
  for (const float sample : samples) {
    const float scaled = std::clamp(sample * 32768.0f, -32768.0f, 32767.0f);
    append(static_cast<uint32_t>(static_cast<int32_t>(std::lrint(scaled))), 2);
  }
  std::ofstream out(path, std::ios::binary);
  out.write(file.data(), static_cast<std::streamsize>(file.size()));
  out.close();
  if (!out) refuse(path, "cannot be written");
}
