// Reads sound from WAV files: integer PCM of 8 to 32 bits and floating point, any number of channels.
#pragma once

#include <string>
#include <vector>

struct Recording {
  int rate = 0;                // samples per second
  int channels = 0;            // of the file
  std::vector<float> samples;  // mean of the channels, full scale 1

  [[nodiscard]] double seconds() const { return static_cast<double>(samples.size()) / rate; }
};

// Throws std::runtime_error with one line that names the file and says what is wrong with it.
Recording read_wav(const std::string& path);

// Writes 16-bit sound of one channel; what exceeds full scale is clipped.
void write_wav(const std::string& path, const std::vector<float>& samples, int rate);
