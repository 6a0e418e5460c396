// SPDX-License-Identifier: MIT
#include "signal/morse/phasetracker.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

constexpr double TWO_PI = 6.283185307179586;
constexpr std::size_t LEAST_MARKS = 6;
constexpr double FIRST_FREQUENCY_ERROR_Hz = 0.6;
constexpr double FREQUENCY_WALK_Hz = 0.25; // deviation of the frequency after a second
constexpr double PHASE_WALK = 0.08;        // deviation of the phase after a second, radians
constexpr double LEAST_ERROR = 0.1;        // of the phase of any mark, radians
constexpr double MEMORY_MARKS = 8.0;       // over which the success of prediction is judged
constexpr double LEAST_COHERENCE = 0.5;
constexpr double LARGEST_CONCENTRATION = 10.0;

double wrapped(double radians)
{
    return std::remainder(radians, TWO_PI);
}

} // namespace

PhaseEstimate trackPhase(const std::vector<PhaseMark>& marks, double frequency_Hz, double time_s)
{
    PhaseEstimate estimate;
    estimate.frequency_Hz = frequency_Hz;
    if (marks.size() < LEAST_MARKS)
        return estimate;

    // A Kalman filter over phase (radians) and frequency (radians a second).
    double time = marks.front().time_s;
    double phase = TWO_PI * std::remainder(marks.front().cycles, 1.0) + std::arg(marks.front().sum);
    double speed = TWO_PI * frequency_Hz;
    const double firstError = TWO_PI * FIRST_FREQUENCY_ERROR_Hz;
    double pp = 0.5 / std::max(marks.front().energy, 0.5) + LEAST_ERROR * LEAST_ERROR;
    double ps = 0.0;
    double ss = firstError * firstError;
    double coherence = 0.0;
    double expected = 0.0;
    double weight = 0.0;
    const auto predict = [&](double to) {
        const double dt = to - time;
        phase += speed * dt;
        const double walk = TWO_PI * FREQUENCY_WALK_Hz;
        pp += 2.0 * dt * ps + dt * dt * ss + PHASE_WALK * PHASE_WALK * std::fabs(dt) +
              walk * walk * std::fabs(dt * dt * dt) / 3.0;
        ps += dt * ss + 0.5 * walk * walk * dt * std::fabs(dt);
        ss += walk * walk * std::fabs(dt);
        time = to;
    };
    for (std::size_t i = 1; i < marks.size(); ++i) {
        const PhaseMark& mark = marks[i];
        predict(mark.time_s);
        const double measured = TWO_PI * std::remainder(mark.cycles, 1.0) + std::arg(mark.sum);
        const double surprise = wrapped(measured - phase);
        const double error = 0.5 / std::max(mark.energy, 0.5) + LEAST_ERROR * LEAST_ERROR;
        const double variance = pp + error;
        const double keep = 1.0 - 1.0 / MEMORY_MARKS;
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
    predict(time_s);
    estimate.cycles = phase / TWO_PI;
    estimate.frequency_Hz = speed / TWO_PI;
    coherence /= weight;
    expected /= weight;
    if (coherence > LEAST_COHERENCE) {
        // Surprises greater than expected mean that the phase is less steady than assumed.
        const double excess = std::max(0.0, 2.0 * std::log(expected / std::min(coherence, 0.999)));
        estimate.concentration = std::min(LARGEST_CONCENTRATION, 1.0 / (pp + excess + 0.02));
    }
    return estimate;
}

} // namespace demodulator
