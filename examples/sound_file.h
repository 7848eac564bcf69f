// Recordings, read and written by libsndfile a stretch at a time, so that memory does not grow with their length.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "generator/output.h"

struct sf_private_tag;  // libsndfile's SNDFILE

struct SoundHandle {
  void operator()(sf_private_tag* file) const;
};

// Any format that libsndfile knows. A pipe, or "-" for standard input, is first copied to a nameless temporary file.
// Failures are std::runtime_error of one line that names the file and what is wrong with it.
class SoundFile {
 public:
  explicit SoundFile(const std::string& path);
  ~SoundFile();
  SoundFile(const SoundFile&) = delete;
  SoundFile& operator=(const SoundFile&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] int rate() const { return rate_; }
  [[nodiscard]] int channels() const { return channels_; }
  [[nodiscard]] const std::string& encoding() const { return encoding_; }  // "WAV (Microsoft), Signed 16 bit PCM"

  // What the survey found. A frame is one sample of every channel; full scale is 1.
  [[nodiscard]] long frames() const { return frames_; }
  [[nodiscard]] double seconds() const { return static_cast<double>(frames_) / rate_; }
  [[nodiscard]] double peak() const { return peak_; }
  [[nodiscard]] double mean() const { return mean_; }    // over time and channels: the constant part
  [[nodiscard]] double power() const { return power_; }  // mean square
  [[nodiscard]] bool channels_cancel() const { return cancel_; }  // their sum is far weaker than they are

  // What samples are multiplied by when they are read: 1, or a power of two where they are so large or small that single
  // precision could not hold their spectrum.
  [[nodiscard]] double gain() const { return gain_; }

  // From the start again.
  void rewind();
  // Up to `frames` further frames, channels interleaved; fewer only at the end.
  size_t read(float* samples, size_t frames);

 private:
  void open();
  void survey();
  [[noreturn]] void refuse(const std::string& reason) const;

  std::string path_, encoding_;
  int descriptor_ = -1, rate_ = 0, channels_ = 0;
  long frames_ = 0;
  double peak_ = 0, mean_ = 0, power_ = 0, gain_ = 1;
  bool cancel_ = false;
  std::unique_ptr<sf_private_tag, SoundHandle> file_;
};

// A recording's samples by channel, taken in stretches that move forward; there is silence before and behind.
class Stretches {
 public:
  Stretches(SoundFile& file, const std::string& title);
  ~Stretches();

  // Moves to the samples first .. first + count - 1 of all channels; `first` never goes back.
  void move(long first, long count);
  [[nodiscard]] std::span<const float> channel(int channel) const;

 private:
  struct Shown;
  SoundFile& file_;
  std::unique_ptr<Shown> progress_;
  std::vector<std::vector<float>> samples_;  // by channel, from first_ on
  std::vector<float> block_;
  long first_ = 0, read_ = 0, offset_ = 0, count_ = 0;
};

// A WAV file of 16 bits, or of floating point where samples exceed full scale; RF64 beyond 4 GB.
class SoundWriter {
 public:
  SoundWriter(const std::string& path, const SoundFile& like);
  void write(std::span<const float> interleaved);
  void commit();

 private:
  std::string path_;
  float factor_;
  std::vector<float> scaled_;
  xfm::OutputFile output_;
  std::unique_ptr<sf_private_tag, SoundHandle> file_;
};
