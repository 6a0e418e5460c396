// SPDX-License-Identifier: MIT
#include "signal/morse/leveltracker.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

double trackLevel(const std::vector<HeardMark>& marks, double signal, double noise,
                  double elapsed_s, const LevelParameters& parameters)
{
    const double weakness =
        std::clamp(parameters.weakRatio * noise / signal, 1.0, parameters.longestMemory);
    const double memory_s = parameters.memory_s * weakness;
    double power = 0.0;
    double weights = 0.0;
    for (const HeardMark& mark : marks) {
        if (mark.end_s > parameters.span_s)
            continue;
        const double length = mark.length_steps;
        const double magnitude = std::abs(mark.sum);
        const double weight = length * std::exp(-mark.end_s / memory_s);
        // What noise adds to the square of the mean step is its variance over their number.
        power += weight * (magnitude * magnitude / (length * length) - noise / length);
        weights += weight;
    }
    if (!(weights > 0.0))
        return signal;
    const double least =
        signal * std::pow(10.0, -0.1 * parameters.fastestFade_dB_per_s * elapsed_s);
    return std::max({power / weights, least, parameters.weakestRatio * noise});
}

} // namespace demodulator
