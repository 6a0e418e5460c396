// SPDX-License-Identifier: MIT
// Log likelihoods as whole numbers. Sixteen of them are added and compared by one instruction of a
// present processor, they take a quarter of the room of a double, and sums of them come out the
// same on every machine.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace demodulator {

/// A log likelihood in units of 1/128. Rounding is far below what decides: paths are compared by
/// whole units of the natural logarithm.
using Score = std::int16_t;

constexpr int SCORES_PER_NAT = 128;

/// Less than any path that is kept. Three of them still fit into a Score, so that sums of a score,
/// an offset and an entry of a table need no check.
constexpr Score NEVER = -10000;
/// The most that an offset may be: with the scores and entries beside it, it fits into a Score.
constexpr Score MOST_SCORE = 28000;

/// Inner loops take scores in whole groups of so many; what is beyond the end of a table is NEVER.
constexpr std::size_t LANES = 16;

constexpr std::size_t wholeLanes(std::size_t count)
{
    return (count + LANES - 1) / LANES * LANES;
}

/// The Score of a natural logarithm, within what a Score may be.
inline Score toScore(double logarithm)
{
    return static_cast<Score>(
        std::lround(std::clamp(logarithm * SCORES_PER_NAT, double{NEVER}, double{MOST_SCORE})));
}

} // namespace demodulator
