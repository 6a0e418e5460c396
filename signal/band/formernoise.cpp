// SPDX-License-Identifier: MIT
#include "signal/band/formernoise.h"

#include <algorithm>

namespace demodulator {

namespace {

// What even noise shows in that way, as a share of its mean, by the guesses of Survey::noiseIn().
constexpr double LOW_OF_MEAN = 0.57;

} // namespace

// Up to the step where noise falls, what came before it was loud; and for a while behind it, which
// costs little.
double FormerNoise::at(std::int64_t frame, std::int64_t oldest, std::int64_t newest,
                       const FrameFloors::FloorOf& floorOf)
{
    if (frame == m_frame)
        return m_noise;
    const std::int64_t first = std::max(frame - SPAN_FRAMES + 1, oldest);
    const std::int64_t last = std::min(frame + SPAN_FRAMES - 1, newest);
    m_floors.keep(first, last, floorOf);
    m_frame = frame;
    // Of a full span the sixth part is weaker, of a shorter one as much less.
    m_noise = std::max(m_floors.above(LOW_ONE_IN, first, frame),
                       m_floors.above(LOW_ONE_IN, frame, last)) /
              LOW_OF_MEAN;
    return m_noise;
}

} // namespace demodulator
