// SPDX-License-Identifier: MIT
// The noise of the frames around a moment, of which one in the order of their strength is taken.
#pragma once

#include <cstdint>
#include <functional>
#include <map>

namespace demodulator {

/// Not for use from several threads at once.
class FrameFloors
{
public:
    /// Noise of a frame, any scale.
    using FloorOf = std::function<double(std::int64_t frame)>;

    /// Keeps the frames from `first` to `last`, both included, and lets go of those before `first`.
    /// Each is asked for once.
    void keep(std::int64_t first, std::int64_t last, const FloorOf& floorOf);

    /// Of the kept frames from `first` to `last`, one in so many is weaker: 2 gives the middle one.
    /// 0 where none is kept.
    double above(int oneIn, std::int64_t first, std::int64_t last) const;

private:
    std::map<std::int64_t, double> m_floors; // by frame
};

} // namespace demodulator
