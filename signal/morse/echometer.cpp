// SPDX-License-Identifier: MIT
#include "signal/morse/echometer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace demodulator {

namespace {

// The largest of the values up to `reach` before each, itself included.
std::vector<float> largestBefore(const std::vector<float>& values, std::size_t reach)
{
    std::vector<float> largest(values.size());
    std::vector<std::size_t> falling; // indices whose values may still be the largest
    std::size_t oldest = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        while (falling.size() > oldest && values[falling.back()] <= values[i])
            falling.pop_back();
        falling.push_back(i);
        while (falling[oldest] + reach < i)
            ++oldest;
        largest[i] = values[falling[oldest]];
    }
    return largest;
}

// Of what is strong on both sides of a step, the weaker side: a level that falls or rises has it on
// one side only.
std::vector<float> marksAround(const std::vector<float>& powers, std::size_t reach)
{
    std::vector<float> marks = largestBefore(powers, reach);
    const std::vector<float> behind =
        largestBefore(std::vector<float>(powers.rbegin(), powers.rend()), reach);
    std::transform(marks.begin(), marks.end(), behind.rbegin(), marks.begin(),
                   [](float a, float b) { return std::min(a, b); });
    return marks;
}

} // namespace

bool hasEcho(const std::vector<float>& powers, double noise, double step_s, bool former,
             const EchoParameters& parameters)
{
    const std::vector<float> marks =
        marksAround(powers, static_cast<std::size_t>(std::llround(parameters.around_s / step_s)));
    const auto isAbove = [&](std::size_t i, double share) {
        return static_cast<double>(powers[i]) > share * static_cast<double>(marks[i]);
    };
    const auto isAtMark = [&](std::size_t i) {
        const std::size_t last = std::min(powers.size() - 1, i + parameters.edge_steps);
        std::size_t near = i - std::min<std::size_t>(i, parameters.edge_steps);
        while (near <= last && !isAbove(near, parameters.strongest))
            ++near;
        return near <= last;
    };
    double gaps = 0.0;
    double filled = 0.0;
    for (std::size_t i = 0; i < powers.size(); ++i) {
        const double echo = parameters.weakest * static_cast<double>(marks[i]);
        if (echo < parameters.overNoise * noise || isAtMark(i))
            continue;
        gaps += 1.0;
        filled += isAbove(i, parameters.weakest) ? 1.0 : 0.0;
    }
    if (gaps * step_s < parameters.leastGaps_s)
        return former;
    return filled > gaps * (former ? parameters.leastShare : parameters.sureShare);
}

} // namespace demodulator
