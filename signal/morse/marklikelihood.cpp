// SPDX-License-Identifier: MIT
#include "signal/morse/marklikelihood.h"

#include "signal/logarithms.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

// Sums are made small again so often, see lowerSums.
constexpr std::int64_t LOWER_SUMS_STEPS = 256;
// Sums reach back to before the first step of the longest mark, in whole groups.
constexpr std::size_t KEPT_SUMS = wholeLanes(MarkLikelihood::LONGEST_STEPS + 1);

double believedNoise(const Level& level, const LikelihoodParameters& parameters)
{
    return std::max({level.noise, level.signal / parameters.largestRatio, 1e-30});
}

// Log probability of an amplitude that no mark has.
constexpr double NO_AMPLITUDE = -100.0;

// Energy of a dot over noise density.
double dotRatio(const Level& level)
{
    return level.dot_steps * level.signal / std::max(level.noise, 1e-30);
}

void weighAmplitudes(const Level& level, const LikelihoodParameters& parameters,
                     MarkWeighing& weighing)
{
    const struct
    {
        double factor, price, freedom;
    } others[] = {
        {parameters.weaker, parameters.nearPrice, parameters.nearFreedom},
        {parameters.stronger, parameters.nearPrice, parameters.nearFreedom},
        {parameters.faded, parameters.fadedPrice, parameters.fadedFreedom},
    };
    const double ratio = std::max(dotRatio(level), 1e-3);
    AmplitudeChoice* choice = weighing.choices;
    double otherwise = 0.0;
    for (const auto& other : others) {
        const double logProbability =
            level.hasEcho ? NO_AMPLITUDE
                          : other.price + parameters.lossOfFreedom *
                                              std::min(0.0, std::log(ratio / other.freedom));
        otherwise += std::exp(logProbability);
        *++choice = {static_cast<float>(other.factor), static_cast<float>(logProbability)};
    }
    const double expected = level.hasEcho ? parameters.besideEcho : 1.0;
    weighing.choices[0] = {static_cast<float>(expected),
                           static_cast<float>(std::log1p(-otherwise))};
}

} // namespace

double evenMagnitude(const Level& level, const LikelihoodParameters& parameters)
{
    // A likelihood that hears one step as long as a dot.
    MarkWeighing weighing = {};
    weighAmplitudes(level, parameters, weighing);
    const double noise = believedNoise(level, parameters);
    const float none_sums[] = {0.0F, 0.0F};
    const float energy[] = {static_cast<float>(level.dot_steps * level.signal / noise), 0.0F};
    double none = 0.0;
    double mark = std::sqrt(level.signal) + std::sqrt(noise);
    for (int i = 0; i < 30; ++i) {
        const double middle = 0.5 * (none + mark);
        const float sum[] = {
            static_cast<float>(level.dot_steps * middle * std::sqrt(level.signal) / noise), 0.0F};
        std::int32_t score = 0;
        weighMarks(weighing, {sum, none_sums, sum, none_sums, energy}, 1, 1, &score);
        (score > 0 ? mark : none) = middle;
    }
    return mark;
}

MarkLikelihood::MarkLikelihood(const LikelihoodParameters& parameters)
    : m_parameters(parameters)
    , m_stepRe(KEPT_STEPS, 0.0F)
    , m_stepIm(KEPT_STEPS, 0.0F)
    , m_re(KEPT_SUMS, 0.0F)
    , m_im(KEPT_SUMS, 0.0F)
    , m_turnedRe(KEPT_SUMS, 0.0F)
    , m_turnedIm(KEPT_SUMS, 0.0F)
    , m_energy(KEPT_SUMS, 0.0F)
{
    m_weighing.otherPhase = static_cast<float>(parameters.otherPhase);
    m_weighing.driftCost = static_cast<float>(parameters.driftPrice);
    setLevel({});
}

void MarkLikelihood::setLevel(const Level& level)
{
    m_level = level;
    weighAmplitudes(level, m_parameters, m_weighing);
    m_weighing.mayDrift = dotRatio(level) > m_parameters.driftingDot;
    m_weighing.part_steps = static_cast<std::size_t>(
        std::max(m_parameters.shortestPart_steps,
                 std::min(level.coherent_steps, m_parameters.part_units * level.dot_steps)));
}

void MarkLikelihood::setPhase(double phase, double concentration)
{
    m_turn = std::polar(1.0, -phase);
    m_weighing.concentration = static_cast<float>(concentration);
    m_weighing.concentrationCost = logBesselI0(m_weighing.concentration);
}

void MarkLikelihood::push(std::complex<double> step, double noiseNow)
{
    m_stepRe.push(static_cast<float>(step.real()));
    m_stepIm.push(static_cast<float>(step.imag()));
    const double noise = std::max(believedNoise(m_level, m_parameters), noiseNow);
    const std::complex<double> weighted = step * (std::sqrt(m_level.signal) / noise);
    const std::complex<double> turned = m_turn * weighted;
    const auto add = [](Recent<float>& sums, double value) {
        sums.push(sums[0] + static_cast<float>(value));
    };
    add(m_re, weighted.real());
    add(m_im, weighted.imag());
    add(m_turnedRe, turned.real());
    add(m_turnedIm, turned.imag());
    add(m_energy, m_level.signal / noise);
    if (++m_end % LOWER_SUMS_STEPS == 0)
        lowerSums();
}

// Only differences of sums are asked for: kept small, they are exact enough as floats.
void MarkLikelihood::lowerSums()
{
    for (Recent<float>* sums : {&m_re, &m_im, &m_turnedRe, &m_turnedIm, &m_energy}) {
        const float newest = (*sums)[0];
        std::for_each(sums->data(), sums->data() + KEPT_SUMS,
                      [newest](float& sum) { sum -= newest; });
    }
}

std::complex<double> MarkLikelihood::sum(std::int64_t begin, std::int64_t end) const
{
    double re = 0.0;
    double im = 0.0;
    for (std::size_t i = age(end - 1); i <= age(begin); ++i) {
        re += static_cast<double>(m_stepRe[i]);
        im += static_cast<double>(m_stepIm[i]);
    }
    return {re, im};
}

std::complex<double> MarkLikelihood::advance(std::int64_t begin, std::int64_t end,
                                             std::int64_t lag) const
{
    if (end - begin <= lag)
        return 0.0;
    const std::size_t newest = age(end - 1);
    const auto before = newest + static_cast<std::size_t>(lag);
    const ComplexSum sum =
        correlate(m_stepRe.data() + newest, m_stepIm.data() + newest, m_stepRe.data() + before,
                  m_stepIm.data() + before, static_cast<std::size_t>(end - begin - lag));
    return {static_cast<double>(sum.re), static_cast<double>(sum.im)};
}

float MarkLikelihood::ratio(std::int64_t length) const
{
    if (length > std::min(m_end, LONGEST_STEPS))
        return -1e9F;
    std::int32_t score = 0;
    ratios(length, 1, &score);
    return static_cast<float>(score) / SCORES_PER_NAT;
}

void MarkLikelihood::ratios(std::int64_t first, std::int64_t count, std::int32_t* scores) const
{
    weighMarks(m_weighing,
               {m_re.data(), m_im.data(), m_turnedRe.data(), m_turnedIm.data(), m_energy.data()},
               static_cast<std::size_t>(first), static_cast<std::size_t>(count), scores);
}

} // namespace demodulator
