// What the demo and the tool say about a recording.
#pragma once

#include <string>

#include "examples/sound_file.h"

void print_recording(const SoundFile& file);
void print_tones(SoundFile& file);
// Draws the picture into `path` and says so.
void write_spectrogram(SoundFile& file, const std::string& path);
// Says what is left with a quarter, a tenth and a twentieth of the coefficients, and writes what `share` sounds like.
void write_compressed(SoundFile& file, double share, const std::string& path);
