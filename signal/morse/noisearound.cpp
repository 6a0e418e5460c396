// SPDX-License-Identifier: MIT
#include "signal/morse/noisearound.h"

#include <algorithm>
#include <vector>

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
    m_floors.erase(m_floors.begin(), m_floors.lower_bound(first));
    for (std::int64_t i = first; i <= last; ++i) {
        if (m_floors.count(i) == 0)
            // cppcheck-suppress stlFindInsert; the floor is computed only where it is missing
            m_floors[i] = finder.floorNear(tone_Hz, finder.frames() - 1 - i);
    }
    std::vector<double> sorted;
    for (const auto& floor : m_floors)
        sorted.push_back(floor.second);
    m_frame = frame;
    m_floor = 0.0;
    if (!sorted.empty()) {
        const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
        std::nth_element(sorted.begin(), middle, sorted.end());
        m_floor = *middle;
    }
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
