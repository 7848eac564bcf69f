// The picture of a recording: its wave, and below it how strong each frequency is at each time.
#pragma once

#include <string>
#include <vector>

#include "examples/sound_file.h"
#include "tool/picture.h"

// Places in pixels.
namespace spectrogram {
inline constexpr int kWidth = 1200, kHeight = 720;
inline constexpr int kLeft = 90, kPlotWidth = 980, kRight = kLeft + kPlotWidth;
inline constexpr int kWaveTop = 50, kWaveHeight = 110;
inline constexpr int kTop = 180, kPlotHeight = 470, kBottom = kTop + kPlotHeight;
inline constexpr int kBarLeft = kRight + 25, kBarWidth = 20;
inline constexpr double kRange = 80;  // in dB, from the brightest to black
}  // namespace spectrogram

// How long a frame of the picture is, in samples: about 40 ms.
int spectrogram_points(int rate);

// The file's bytes.
std::string draw_spectrogram(SoundFile& file, const std::string& title, xfm::tool::PictureFormat format);
