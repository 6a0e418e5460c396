// SPDX-License-Identifier: MIT
// Stage: the noise that a step of the past had around it, so that noise which has fallen since is
// not taken for keying. Keying itself, which leaks into what is measured, leaves gaps: what the
// weakest frames before or behind the step show is noise.
#pragma once

#include "signal/morse/framefloors.h"

#include <cstdint>

namespace demodulator {

/// Not for use from several threads at once.
class FormerNoise
{
public:
    /// Frames that count on each side of a step, itself included: 1 s.
    static constexpr std::int64_t SPAN_FRAMES = 31;
    /// The weakest one of so many of them is taken.
    static constexpr std::int64_t LOW_ONE_IN = 6;

    /// At a frame, of those from `oldest` to `newest`: the larger of what is usual before it and
    /// behind it, 0 where no frame is there. Each frame is asked for once; they come in order.
    double at(std::int64_t frame, std::int64_t oldest, std::int64_t newest,
              const FrameFloors::FloorOf& floorOf);

private:
    FrameFloors m_floors;
    std::int64_t m_frame = -1;
    double m_noise = 0.0; // at it
};

} // namespace demodulator
