// SPDX-License-Identifier: MIT
// The power of sound over time and frequency.
#pragma once

#include "station/picture/sound.h"

#include <vector>

namespace inspect {

struct Spectrogram
{
    int columns = 0; ///< moments, evenly spaced from edge to edge of the time asked for
    int rows = 0;    ///< frequencies, the highest first
    double lowest_Hz = 0.0, highest_Hz = 0.0; ///< of the lower and the upper edge
    std::vector<float> power_dB;              ///< full-scale tone: 0 dB; row by row
};

/// Silence where the sound has none. Empty when it has no rate, or where no frequency lies between
/// the two.
Spectrogram spectrogram(const Sound& sound, const Stretch& time, double lowest_Hz,
                        double highest_Hz);

} // namespace inspect
