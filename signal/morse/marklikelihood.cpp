// SPDX-License-Identifier: MIT
#include "signal/morse/marklikelihood.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

using AmplitudeWeights = std::array<double, MarkLikelihood::AMPLITUDE_COUNT>;

// std::abs of a complex number guards against overflow, which takes most of the time of it.
double magnitudeOf(std::complex<double> value)
{
    return std::sqrt(std::norm(value));
}

// Amplitudes that a single mark may have, relative to the level followed, each with its log
// probability. Of weak signals only the first is believed: noise finds in every freedom a way to
// look like a mark.
struct Amplitude
{
    double factor;
    double freedom;
    double freeRatio; // signal to noise of one dot that leaves that freedom
};
constexpr std::array<Amplitude, MarkLikelihood::AMPLITUDE_COUNT> AMPLITUDES = {{
    {1.0, 0.0, 0.0}, {0.62, -1.4, 60.0}, {1.5, -1.4, 60.0}, {0.25, -2.5, 300.0}, // in a deep fade
}};
constexpr double LOSS_OF_FREEDOM = 4.3; // for each e-fold below that ratio

// A strong signal is not trusted beyond this signal-to-noise ratio of one step: rising edges,
// fading and clicks are no noise that the model knows, and lengths have to count beside levels.
constexpr double LARGEST_RATIO = 8.0;

constexpr double STRONG_DOT = 60.0; // energy of a dot over noise density
constexpr std::int64_t LEAST_CUT_LENGTH = 12;
constexpr std::int64_t LONG_LENGTH = 48;
constexpr double OTHER_PHASE = -4.0; // log probability that the phase is not the one expected
constexpr double PHASE_DRIFT = 3.0;  // logarithm of how improbable a drift from part to part is

double believedNoise(const Level& level)
{
    return std::max({level.noise, level.signal / LARGEST_RATIO, 1e-30});
}

void weighAmplitudes(const Level& level, AmplitudeWeights& logProbabilities)
{
    const double ratio =
        std::max(level.dot_steps * level.signal / std::max(level.noise, 1e-30), 1e-3);
    double others = 0.0;
    for (std::size_t i = 1; i < AMPLITUDES.size(); ++i) {
        logProbabilities[i] =
            AMPLITUDES[i].freedom +
            LOSS_OF_FREEDOM * std::min(0.0, std::log(ratio / AMPLITUDES[i].freeRatio));
        others += std::exp(logProbabilities[i]);
    }
    logProbabilities[0] = std::log1p(-others);
}

// The most probable amplitude, as if its phase were known.
std::size_t bestAmplitude(const AmplitudeWeights& logProbabilities, double magnitude, double energy)
{
    std::size_t best = 0;
    double bestFit = -1e9;
    for (std::size_t i = 0; i < AMPLITUDES.size(); ++i) {
        const double factor = AMPLITUDES[i].factor;
        const double fit = logProbabilities[i] + factor * (magnitude - factor * energy);
        if (fit > bestFit) {
            bestFit = fit;
            best = i;
        }
    }
    return best;
}

} // namespace

double evenMagnitude(const Level& level)
{
    AmplitudeWeights logProbabilities;
    weighAmplitudes(level, logProbabilities);
    const double noise = believedNoise(level);
    const double energy = level.dot_steps * level.signal / noise;
    double none = 0.0;
    double mark = std::sqrt(level.signal) + std::sqrt(noise);
    for (int i = 0; i < 30; ++i) {
        const double middle = 0.5 * (none + mark);
        const double magnitude = 2.0 * level.dot_steps * middle * std::sqrt(level.signal) / noise;
        const std::size_t best = bestAmplitude(logProbabilities, magnitude, energy);
        const double factor = AMPLITUDES[best].factor;
        const double ratio =
            logProbabilities[best] - factor * factor * energy + logBesselI0(factor * magnitude);
        (ratio > 0.0 ? mark : none) = middle;
    }
    return mark;
}

double logBesselI0(double x)
{
    if (x < 3.0) {
        const double q = x * x / 4.0;
        return std::log1p(q * (1.0 + q * (0.25 + q * (1.0 / 36 + q * (1.0 / 576 + q / 14400)))));
    }
    // Asymptotic series, better than 1 % of its value here and exact for large x.
    return x - 0.5 * std::log(6.283185307179586 * x) + 0.125 / x + 0.0703 / (x * x);
}

MarkLikelihood::MarkLikelihood()
    : m_steps(KEPT_STEPS)
    , m_sums(KEPT_STEPS + 1)
{
}

void MarkLikelihood::setLevel(const Level& level)
{
    m_level = level;
    weighAmplitudes(level, m_logProbabilities);
}

void MarkLikelihood::setPhase(double phase, double concentration)
{
    m_turn = std::polar(1.0, -phase);
    m_concentration = concentration;
    m_concentrationCost = logBesselI0(concentration);
}

void MarkLikelihood::push(std::complex<double> step, double noiseNow)
{
    m_steps[static_cast<std::size_t>(m_end % KEPT_STEPS)] = step;
    const double noise = std::max(believedNoise(m_level), noiseNow);
    Sums next = sums(m_end);
    next.plain += step;
    next.weighted += m_turn * step * (std::sqrt(m_level.signal) / noise);
    next.energy += m_level.signal / noise;
    ++m_end;
    m_sums[static_cast<std::size_t>(m_end % (KEPT_STEPS + 1))] = next;
}

std::complex<double> MarkLikelihood::sum(std::int64_t begin, std::int64_t end) const
{
    return sums(end).plain - sums(begin).plain;
}

std::complex<double> MarkLikelihood::advance(std::int64_t begin, std::int64_t end,
                                             std::int64_t lag) const
{
    std::complex<double> result = 0.0;
    for (std::int64_t n = begin + lag; n < end; ++n) {
        result += m_steps[static_cast<std::size_t>(n % KEPT_STEPS)] *
                  std::conj(m_steps[static_cast<std::size_t>((n - lag) % KEPT_STEPS)]);
    }
    return result;
}

float MarkLikelihood::ratio(std::int64_t length) const
{
    if (length > m_end)
        return -1e9F;
    const Sums& begin = sums(m_end - length);
    const Sums& end = sums(m_end);
    const std::complex<double> sum = 2.0 * (end.weighted - begin.weighted);
    double magnitude = magnitudeOf(sum);
    if (m_level.signal * m_level.dot_steps > STRONG_DOT * m_level.noise &&
        length >= LEAST_CUT_LENGTH) {
        // Of a strong signal the phase may drift: chirp and a tone that is not quite hit are no
        // reason to doubt a mark.
        const std::int64_t parts = length < LONG_LENGTH ? 2 : 4;
        double drifting = 0.0;
        for (std::int64_t part = 0; part < parts; ++part) {
            drifting += magnitudeOf(sums(m_end - length * part / parts).weighted -
                                    sums(m_end - length * (part + 1) / parts).weighted);
        }
        magnitude =
            std::max(magnitude, 2.0 * drifting - PHASE_DRIFT * static_cast<double>(parts - 1));
    }
    const double energy = end.energy - begin.energy;
    // Once an amplitude is chosen, the phase is averaged over.
    const std::size_t best = bestAmplitude(m_logProbabilities, magnitude, energy);
    const double amplitude = AMPLITUDES[best].factor;
    double evidence = logBesselI0(amplitude * magnitude);
    if (m_concentration > 0.0) {
        evidence = std::max(evidence + OTHER_PHASE,
                            logBesselI0(magnitudeOf(amplitude * sum + m_concentration)) -
                                m_concentrationCost);
    }
    return static_cast<float>(m_logProbabilities[best] - amplitude * amplitude * energy + evidence);
}

} // namespace demodulator
