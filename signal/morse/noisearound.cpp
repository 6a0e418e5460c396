// SPDX-License-Identifier: MIT
#include "signal/morse/noisearound.h"

#include <algorithm>

namespace demodulator {

// The middle one, so that neither a mark's edge nor a crash of static counts, while a step in the
// noise keeps its place.
double NoiseAround::at(const ToneFinder& finder, double tone_Hz, std::int64_t frame)
{
    if (frame == m_frame)
        return m_floor;
    const std::int64_t first =
        std::max({frame - FRAMES / 2, finder.frames() - ToneFinder::KEPT_FRAMES, std::int64_t{0}});
    const std::int64_t last = std::min(frame + FRAMES / 2, finder.frames() - 1);
    m_floors.keep(first, last, [&finder, tone_Hz](std::int64_t i) {
        return finder.floorNear(tone_Hz, finder.frames() - 1 - i);
    });
    m_frame = frame;
    m_floor = m_floors.above(2, first, last);
    return m_floor;
}

double NoiseAround::before(const ToneFinder& finder, double tone_Hz, std::int64_t samples)
{
    const auto half = static_cast<std::int64_t>(finder.frameLength()) / 2;
    const std::int64_t age =
        std::max<std::int64_t>(0, samples - half) / static_cast<std::int64_t>(finder.hop());
    return at(finder, tone_Hz, finder.frames() - 1 - age);
}

} // namespace demodulator
