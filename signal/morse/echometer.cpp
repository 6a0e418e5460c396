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

// A step in a gap.
struct Gap
{
    std::size_t step; // back from now
    bool isFilled;
};

// How surely the gaps are filled where a mark was so long before, and empty where none was, at the
// delay that fits best: a weak mark of a signal that fades follows no other. The smaller of the two
// shares counts, since fading may agree with one of them.
double agreement(const std::vector<Gap>& gaps, const std::vector<bool>& isMark,
                 std::size_t shortest, std::size_t longest)
{
    double best = 0.0;
    for (std::size_t delay = shortest; delay <= longest; ++delay) {
        double filled = 0.0;
        double afterMark = 0.0;
        double empty = 0.0;
        double afterNone = 0.0;
        for (const Gap& gap : gaps) {
            const std::size_t former = gap.step + delay;
            if (former >= isMark.size())
                break;
            if (isMark[former]) {
                afterMark += 1.0;
                filled += gap.isFilled ? 1.0 : 0.0;
            } else {
                afterNone += 1.0;
                empty += gap.isFilled ? 0.0 : 1.0;
            }
        }
        best = std::max(
            best, std::min(filled / std::max(1.0, afterMark), empty / std::max(1.0, afterNone)));
    }
    return best;
}

} // namespace

bool hasEcho(const std::vector<float>& powers, double noise, double step_s, bool former,
             const EchoParameters& parameters)
{
    const auto steps = [step_s](double duration_s) {
        return static_cast<std::size_t>(std::llround(duration_s / step_s));
    };
    const std::vector<float> marks = marksAround(powers, steps(parameters.around_s));
    const auto isAbove = [&](std::size_t i, double share) {
        return static_cast<double>(powers[i]) > share * static_cast<double>(marks[i]);
    };
    std::vector<bool> isMark;
    for (std::size_t i = 0; i < powers.size(); ++i)
        isMark.push_back(isAbove(i, parameters.strongest));
    const auto isAtMark = [&](std::size_t i) {
        const std::size_t last = std::min(powers.size() - 1, i + parameters.edge_steps);
        std::size_t near = i - std::min<std::size_t>(i, parameters.edge_steps);
        while (near <= last && !isMark[near])
            ++near;
        return near <= last;
    };
    std::vector<Gap> gaps;
    for (std::size_t i = 0; i < powers.size(); ++i) {
        const double echo = parameters.weakest * static_cast<double>(marks[i]);
        if (echo >= parameters.overNoise * noise && !isAtMark(i))
            gaps.push_back({i, isAbove(i, parameters.weakest)});
    }
    if (static_cast<double>(gaps.size()) * step_s < parameters.leastGaps_s)
        return former;
    return agreement(gaps, isMark, steps(parameters.shortest_s), steps(parameters.longest_s)) >
           (former ? parameters.leastAgreement : parameters.sureAgreement);
}

} // namespace demodulator
