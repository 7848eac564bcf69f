// The strongest tones of a recording.
#pragma once

#include <vector>

#include "examples/sound_file.h"

struct Tone {
  double frequency;  // in Hz
  double level;      // mean over the recording and its channels, in dB; a sine of full scale has 0
};

// The shortest recording whose tones can be told, in samples.
inline constexpr long kShortestForTones = 64;

// The strongest peaks of the mean spectrum of a recording of at least that length, strongest first, `most` at most.
std::vector<Tone> strongest_tones(SoundFile& file, size_t most);
