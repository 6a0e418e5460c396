// SPDX-License-Identifier: MIT
#include "signal/band/formernoise.h"

#include <algorithm>
#include <vector>

namespace demodulator {

namespace {

// What even noise shows in that way, as a share of its mean: measured on noise, with the guesses
// of Survey::noiseIn().
constexpr double LOW_OF_MEAN = 0.57;

} // namespace

// Up to the step where noise falls, what came before it was loud; and for a while behind it, which
// costs little.
double FormerNoise::at(std::int64_t frame, std::int64_t oldest, std::int64_t newest,
                       const FloorOf& floorOf)
{
    if (frame == m_frame)
        return m_noise;
    const std::int64_t first = std::max(frame - SPAN_FRAMES + 1, oldest);
    const std::int64_t last = std::min(frame + SPAN_FRAMES - 1, newest);
    m_floors.erase(m_floors.begin(), m_floors.lower_bound(first));
    for (std::int64_t i = first; i <= last; ++i) {
        if (m_floors.count(i) == 0)
            // cppcheck-suppress stlFindInsert; the floor is computed only where it is missing
            m_floors[i] = floorOf(i);
    }
    m_frame = frame;
    m_noise = std::max(lowest(first, frame), lowest(frame, last));
    return m_noise;
}

// Of a full span the sixth part, of a shorter one as much less.
double FormerNoise::lowest(std::int64_t first, std::int64_t last) const
{
    std::vector<double> values;
    for (auto floor = m_floors.lower_bound(first); floor != m_floors.end() && floor->first <= last;
         ++floor)
        values.push_back(floor->second);
    if (values.empty())
        return 0.0;
    const auto low = values.begin() + static_cast<std::ptrdiff_t>(values.size()) / LOW_ONE_IN;
    std::nth_element(values.begin(), low, values.end());
    return *low / LOW_OF_MEAN;
}

} // namespace demodulator
