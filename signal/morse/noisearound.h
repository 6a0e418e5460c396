// SPDX-License-Identifier: MIT
// The noise near a tone at a time of the last seconds, so that a step is weighed by that of its own
// time: the middle one of the frames around it.
#pragma once

#include "signal/morse/framefloors.h"
#include "signal/morse/tonefinder.h"

#include <cstdint>

namespace demodulator {

class NoiseAround
{
public:
    /// Frames that count, the one asked for in the middle: 1 s.
    static constexpr std::int64_t FRAMES = 31;

    /// As ToneFinder::floorNear. Frames are counted since the beginning; only those that the finder
    /// still has count. Each is looked at once, so the tone may wander but not jump.
    double at(const ToneFinder& finder, double tone_Hz, std::int64_t frame);

    /// The same around the moment so many samples before the end of the newest frame: the frame
    /// whose middle is there, or comes next, the newest at most.
    double before(const ToneFinder& finder, double tone_Hz, std::int64_t samples);

private:
    FrameFloors m_floors;
    std::int64_t m_frame = -1;
    double m_floor = 0.0; // around it
};

} // namespace demodulator
