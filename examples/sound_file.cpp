#include "examples/sound_file.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "tool/progress.h"

namespace {

constexpr size_t kBlock = 1 << 14;  // frames
constexpr long kMostRate = 10000000;

// libsndfile's words without their full stop and line ends.
std::string words(const char* message) {
  std::string text = message;
  while (!text.empty() && (text.back() == '.' || text.back() == '\n')) text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

// A file without a name that holds all that a pipe gives.
int copy_of_pipe(int pipe, const std::string& path) {
  std::error_code error;
  std::string name = (std::filesystem::temp_directory_path(error) / "xfm_sound_XXXXXX").string();
  if (error) throw std::runtime_error(path + ": cannot be copied first: TMPDIR names no folder");
  const int copy = mkostemp(name.data(), O_CLOEXEC);
  const auto fail = [&] { throw std::runtime_error(path + ": its copy in " + name + " cannot be written: " + std::strerror(errno)); };
  if (copy < 0) fail();
  unlink(name.c_str());
  xfm::tool::Progress progress("Bytes received", 0);
  std::vector<char> block(1 << 16);
  for (ssize_t got; (got = ::read(pipe, block.data(), block.size())) != 0;) {
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw std::runtime_error(path + ": cannot be read: " + std::strerror(errno));
    for (ssize_t done = 0; done < got;) {
      const ssize_t written = ::write(copy, block.data() + done, static_cast<size_t>(got - done));
      if (written < 0) fail();
      done += written;
    }
    progress.advance(static_cast<double>(got));
  }
  return copy;
}

std::string format_name(int command, int format) {
  SF_FORMAT_INFO info{};
  info.format = format;
  return sf_command(nullptr, command, &info, sizeof info) == 0 && info.name != nullptr ? info.name : "unknown";
}

}  // namespace

void SoundHandle::operator()(sf_private_tag* file) const { sf_close(file); }

void SoundFile::refuse(const std::string& reason) const { throw std::runtime_error(path_ + ": " + reason); }

SoundFile::SoundFile(const std::string& path) : path_(path == "-" ? "standard input" : path) {
  descriptor_ = path == "-" ? dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor_ < 0) refuse(std::string("cannot be opened: ") + std::strerror(errno));
  struct stat status;
  if (fstat(descriptor_, &status) != 0) refuse(std::string("cannot be read: ") + std::strerror(errno));
  if (S_ISDIR(status.st_mode)) refuse("is a folder, not a recording");
  if (!S_ISREG(status.st_mode)) {
    const int pipe = descriptor_;
    descriptor_ = copy_of_pipe(pipe, path_);
    close(pipe);
    fstat(descriptor_, &status);
  }
  if (status.st_size == 0) refuse("is empty");
  open();
  survey();
}

SoundFile::~SoundFile() {
  file_.reset();
  if (descriptor_ >= 0) close(descriptor_);
}

void SoundFile::open() {
  lseek(descriptor_, 0, SEEK_SET);
  SF_INFO info{};
  file_.reset(sf_open_fd(descriptor_, SFM_READ, &info, 0));
  if (file_ == nullptr) refuse("cannot be read as sound: " + words(sf_strerror(nullptr)));
  if (info.channels < 1 || info.samplerate < 1 || info.samplerate > kMostRate) refuse("its header is damaged");
  rate_ = info.samplerate;
  channels_ = info.channels;
  encoding_ = format_name(SFC_GET_FORMAT_INFO, info.format & SF_FORMAT_TYPEMASK) + ", " +
              format_name(SFC_GET_FORMAT_INFO, info.format & SF_FORMAT_SUBMASK);
  frames_ = info.frames;
}

// Reads all of it once: headers do not always tell the length, and what is no number must be known before anything is said.
void SoundFile::survey() {
  xfm::tool::Progress progress("Reading", static_cast<double>(frames_));
  std::vector<float> block(kBlock * static_cast<size_t>(channels_));
  long frames = 0;
  double sum = 0, square = 0, sum_square = 0;
  for (size_t got; (got = read(block.data(), kBlock)) > 0; progress.to(static_cast<double>(frames))) {
    for (size_t i = 0; i < got; ++i) {
      double together = 0;
      for (int c = 0; c < channels_; ++c) {
        const double sample = block[i * channels_ + c];
        if (!std::isfinite(sample)) refuse("sample " + std::to_string(frames + static_cast<long>(i)) + " is not a number");
        peak_ = std::max(peak_, std::abs(sample));
        together += sample;
        square += sample * sample;
      }
      sum += together;
      sum_square += together * together;
    }
    frames += static_cast<long>(got);
  }
  if (frames == 0) refuse("holds no sound");
  frames_ = frames;
  const double samples = static_cast<double>(frames) * channels_;
  mean_ = sum / samples;
  power_ = square / samples;
  cancel_ = channels_ > 1 && sum_square / channels_ < 1e-4 * square;
  constexpr double kLarge = 1e30, kSmall = 1e-20;
  if (peak_ > kLarge || (peak_ > 0 && peak_ < kSmall)) gain_ = std::exp2(-std::ilogb(peak_));
}

void SoundFile::rewind() {
  const long frames = frames_;
  open();
  frames_ = frames;
}

size_t SoundFile::read(float* samples, size_t frames) {
  const sf_count_t got = sf_readf_float(file_.get(), samples, static_cast<sf_count_t>(frames));
  if (got < 0 || sf_error(file_.get()) != SF_ERR_NO_ERROR) refuse("cannot be read to its end: " + words(sf_strerror(file_.get())));
  if (gain_ != 1)
    for (size_t i = 0; i < static_cast<size_t>(got) * channels_; ++i) samples[i] = static_cast<float>(samples[i] * gain_);
  return static_cast<size_t>(got);
}

struct Stretches::Shown : xfm::tool::Progress {
  using Progress::Progress;
};

Stretches::Stretches(SoundFile& file, const std::string& title)
    : file_(file),
      progress_(std::make_unique<Shown>(title, static_cast<double>(file.frames()))),
      samples_(static_cast<size_t>(file.channels())),
      block_(kBlock * static_cast<size_t>(file.channels())) {
  file_.rewind();
}

Stretches::~Stretches() = default;

void Stretches::move(long first, long count) {
  if (first_ == 0 && read_ == 0 && first < 0) {  // silence before the start
    first_ = first;
    for (auto& samples : samples_) samples.assign(static_cast<size_t>(-first), 0.0f);
  }
  long size = static_cast<long>(samples_[0].size());
  while (first_ + size < first + count) {
    const size_t got = read_ < file_.frames() ? file_.read(block_.data(), kBlock) : 0;
    const size_t add = got > 0 ? got : static_cast<size_t>(first + count - first_ - size);  // silence behind the end
    const long drop = std::clamp(first - first_, 0L, size);
    for (size_t c = 0; c < samples_.size(); ++c) {
      auto& samples = samples_[c];
      samples.erase(samples.begin(), samples.begin() + drop);
      for (size_t i = 0; i < add; ++i) samples.push_back(got > 0 ? block_[i * samples_.size() + c] : 0.0f);
    }
    first_ += drop;
    read_ += static_cast<long>(got);
    size = static_cast<long>(samples_[0].size());
    progress_->to(static_cast<double>(read_));
  }
  offset_ = first - first_;
  count_ = count;
}

std::span<const float> Stretches::channel(int channel) const {
  return {samples_[static_cast<size_t>(channel)].data() + offset_, static_cast<size_t>(count_)};
}

SoundWriter::SoundWriter(const std::string& path, const SoundFile& like)
    : path_(path), factor_(static_cast<float>(1 / like.gain())), output_(path) {
  const bool fits = like.peak() <= 1;
  const double bytes = static_cast<double>(like.frames()) * like.channels() * (fits ? 2 : 4);
  SF_INFO info{};
  info.samplerate = like.rate();
  info.channels = like.channels();
  info.format = (bytes > 4e9 ? SF_FORMAT_RF64 : SF_FORMAT_WAV) | (fits ? SF_FORMAT_PCM_16 : SF_FORMAT_FLOAT);
  file_.reset(sf_open_fd(output_.descriptor(), SFM_WRITE, &info, 0));
  if (file_ == nullptr) throw std::runtime_error(path_ + ": cannot be written: " + words(sf_strerror(nullptr)));
  sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
  sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);  // it would hold the time of day
}

void SoundWriter::write(std::span<const float> interleaved) {
  scaled_.assign(interleaved.begin(), interleaved.end());
  for (float& sample : scaled_) sample *= factor_;
  const auto count = static_cast<sf_count_t>(scaled_.size());
  if (sf_write_float(file_.get(), scaled_.data(), count) != count)
    throw std::runtime_error(path_ + ": cannot be written: " + words(sf_strerror(file_.get())));
}

void SoundWriter::commit() {
  sf_write_sync(file_.get());
  const int error = sf_close(file_.release());
  if (error != SF_ERR_NO_ERROR) throw std::runtime_error(path_ + ": cannot be written: " + words(sf_error_number(error)));
  output_.commit();
}
