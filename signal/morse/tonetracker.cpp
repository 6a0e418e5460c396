// SPDX-License-Identifier: MIT
#include "signal/morse/tonetracker.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

double trackTone(const std::vector<HeardMark>& marks, double tone_Hz, double signal, double noise,
                 const ToneParameters& parameters)
{
    const double leastNoise = std::max(noise, signal / parameters.largestRatio);
    const double steepest = parameters.steepest_Hz_per_s;
    // Normal equations of the line; what is expected of its slope counts as a measurement of it.
    double s0 = 0.0;
    double s1 = 0.0;
    double s2 = 1.0 / (steepest * steepest);
    double t0 = 0.0;
    double t1 = 0.0;
    for (const HeardMark& mark : marks) {
        if (mark.isForeign || mark.end_s > parameters.span_s || !(std::abs(mark.turn) > 0.0))
            continue;
        const double perHertz = TWO_PI * mark.lag_s;
        const double turned = std::arg(mark.turn) + TWO_PI * mark.wholeTurns;
        const double offset_Hz = mark.tone_Hz + turned / perHertz - tone_Hz;
        const double information = std::abs(mark.turn) / leastNoise * perHertz * perHertz;
        const double weight =
            std::exp(-mark.middle_s / parameters.memory_s) /
            (parameters.leastError_Hz * parameters.leastError_Hz + 1.0 / information);
        s0 += weight;
        s1 -= weight * mark.middle_s;
        s2 += weight * mark.middle_s * mark.middle_s;
        t0 += weight * offset_Hz;
        t1 -= weight * offset_Hz * mark.middle_s;
    }
    if (!(s0 > 0.0))
        return tone_Hz;
    const double pull_Hz = (t0 * s2 - t1 * s1) / (s0 * s2 - s1 * s1);
    return tone_Hz + std::clamp(parameters.gain * pull_Hz, -parameters.largestPull_Hz,
                                parameters.largestPull_Hz);
}

} // namespace demodulator
