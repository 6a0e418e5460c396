// SPDX-License-Identifier: MIT
#include "signal/morse/phasetracker.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

double wrapped(double radians)
{
    return std::remainder(radians, TWO_PI);
}

} // namespace

PhaseEstimate trackPhase(const std::vector<HeardMark>& marks, double frequency_Hz, double noise,
                         const PhaseParameters& parameters)
{
    PhaseEstimate estimate;
    estimate.frequency_Hz = frequency_Hz;
    if (marks.size() < parameters.leastMarks)
        return estimate;
    const auto measuredOf = [](const HeardMark& mark) {
        return TWO_PI * std::remainder(mark.cycles, 1.0) + std::arg(mark.sum);
    };
    const auto errorOf = [&](const HeardMark& mark) {
        const double energy = std::norm(mark.sum) / noise / mark.length_steps;
        return 0.5 / std::max(energy, parameters.leastEnergy) +
               parameters.leastError * parameters.leastError;
    };

    // A Kalman filter over phase (radians) and frequency (radians a second); time is 0 now.
    double time = -marks.front().middle_s;
    double phase = measuredOf(marks.front());
    double speed = TWO_PI * frequency_Hz;
    const double firstError = TWO_PI * parameters.firstFrequencyError_Hz;
    double pp = errorOf(marks.front());
    double ps = 0.0;
    double ss = firstError * firstError;
    double coherence = 0.0;
    double expected = 0.0;
    double weight = 0.0;
    const auto predict = [&](double to) {
        const double dt = to - time;
        phase += speed * dt;
        const double walk = TWO_PI * parameters.frequencyWalk_Hz;
        pp += 2.0 * dt * ps + dt * dt * ss +
              parameters.phaseWalk * parameters.phaseWalk * std::fabs(dt) +
              walk * walk * std::fabs(dt * dt * dt) / 3.0;
        ps += dt * ss + 0.5 * walk * walk * dt * std::fabs(dt);
        ss += walk * walk * std::fabs(dt);
        time = to;
    };
    for (std::size_t i = 1; i < marks.size(); ++i) {
        const HeardMark& mark = marks[i];
        predict(-mark.middle_s);
        const double surprise = wrapped(measuredOf(mark) - phase);
        const double variance = pp + errorOf(mark);
        const double keep = 1.0 - 1.0 / parameters.memory_marks;
        coherence = coherence * keep + std::cos(surprise);
        expected = expected * keep + std::exp(-0.5 * variance);
        weight = weight * keep + 1.0;
        const double gainPhase = pp / variance;
        const double gainSpeed = ps / variance;
        phase += gainPhase * surprise;
        speed += gainSpeed * surprise;
        ss -= gainSpeed * ps;
        ps -= gainPhase * ps;
        pp -= gainPhase * pp;
    }
    predict(0.0);
    estimate.cycles = phase / TWO_PI;
    estimate.frequency_Hz = speed / TWO_PI;
    coherence /= weight;
    expected /= weight;
    if (coherence > parameters.leastCoherence) {
        // Surprises greater than expected mean that the phase is less steady than assumed.
        const double excess =
            std::max(0.0, 2.0 * std::log(expected / std::min(coherence, parameters.mostCoherence)));
        estimate.concentration = std::min(parameters.largestConcentration,
                                          1.0 / (pp + excess + parameters.leastVariance));
    }
    return estimate;
}

} // namespace demodulator
