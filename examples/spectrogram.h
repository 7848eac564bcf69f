// The picture of a recording: its wave, and below it how strong each frequency is at each time.
#pragma once

#include <string>

#include "wav.h"

// How long a frame of the picture is, in samples: about 40 ms.
int spectrogram_points(int rate);

// The PNG file's bytes.
std::string spectrogram_png(const Recording& recording, const std::string& title);
