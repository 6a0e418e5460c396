// SPDX-License-Identifier: MIT
#include "signal/morse/framefloors.h"

#include <algorithm>
#include <vector>

namespace demodulator {

void FrameFloors::keep(std::int64_t first, std::int64_t last, const FloorOf& floorOf)
{
    m_floors.erase(m_floors.begin(), m_floors.lower_bound(first));
    for (std::int64_t frame = first; frame <= last; ++frame) {
        if (m_floors.count(frame) == 0)
            // cppcheck-suppress stlFindInsert; the floor is computed only where it is missing
            m_floors[frame] = floorOf(frame);
    }
}

double FrameFloors::above(int oneIn, std::int64_t first, std::int64_t last) const
{
    std::vector<double> floors;
    for (auto floor = m_floors.lower_bound(first); floor != m_floors.end() && floor->first <= last;
         ++floor)
        floors.push_back(floor->second);
    if (floors.empty())
        return 0.0;
    const auto taken = floors.begin() + static_cast<std::ptrdiff_t>(floors.size()) / oneIn;
    std::nth_element(floors.begin(), taken, floors.end());
    return *taken;
}

} // namespace demodulator
