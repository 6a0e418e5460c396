// SPDX-License-Identifier: MIT
#include "signal/band/shiftedpairs.h"

#include "signal/teleprinter/line.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace demodulator {

namespace {

// 64 ms: pieces by which it is seen for how long both are keyed.
constexpr std::size_t PIECE_STEPS = 16;
constexpr double OWN_SPACINGS = 0.6; // half of one to both sides, and some more for one between two

double productOf(const std::vector<float>& one, const std::vector<float>& other, std::size_t lag)
{
    return static_cast<double>(std::inner_product(one.begin() + static_cast<std::ptrdiff_t>(lag),
                                                  one.end(), other.begin(), 0.0F));
}

} // namespace

// Fading and pauses are slower than keying, and go with the mean.
ShiftedPairs::Swing ShiftedPairs::swingOf(double tone_Hz, std::vector<float> amplitudes) const
{
    const std::size_t count = amplitudes.size();
    const auto reach = static_cast<std::size_t>(0.5 * m_parameters.mean_s / m_bank.step_s());
    std::vector<double> sums(count + 1, 0.0);
    for (std::size_t i = 0; i < count; ++i)
        sums[i + 1] = sums[i] + static_cast<double>(amplitudes[i]);
    Swing swing = {tone_Hz, std::move(amplitudes), 0.0};
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t first = i > reach ? i - reach : 0;
        const std::size_t last = std::min(count, i + reach + 1);
        swing.values[i] -=
            static_cast<float>((sums[last] - sums[first]) / static_cast<double>(last - first));
    }
    swing.power = productOf(swing.values, swing.values, 0) / static_cast<double>(count);
    return swing;
}

std::vector<ShiftedPairs::Swing> ShiftedPairs::swingsAround(double tone_Hz,
                                                            std::int64_t end_step) const
{
    const auto span = static_cast<std::int64_t>(m_parameters.heard_s / m_bank.step_s());
    const std::int64_t begin_step = std::max<std::int64_t>(0, end_step - span);
    const auto reach = static_cast<long>(teleprinter::MOST_SHIFT_Hz / m_bank.spacing_Hz());
    const long first = std::lround(tone_Hz / m_bank.spacing_Hz()) - reach;
    std::vector<std::vector<float>> amplitudes(2 * static_cast<std::size_t>(reach) + 1);
    for (std::vector<float>& one : amplitudes)
        one.reserve(static_cast<std::size_t>(end_step - begin_step));
    for (std::int64_t step = begin_step; step < end_step; ++step) {
        long index = first;
        for (std::vector<float>& one : amplitudes)
            one.push_back(std::sqrt(std::norm(m_bank.filter(step, index++))));
    }
    std::vector<Swing> swings;
    swings.reserve(amplitudes.size());
    long index = first;
    for (std::vector<float>& one : amplitudes)
        swings.push_back(
            swingOf(static_cast<double>(index++) * m_bank.spacing_Hz(), std::move(one)));
    return swings;
}

// The tone is at one of both, or at the hump that both make of a signal that is quick for its
// shift.
bool ShiftedPairs::mayBePair(double tone_Hz, const Swing& lower, const Swing& upper) const
{
    const double shift_Hz = upper.tone_Hz - lower.tone_Hz;
    const double offset_Hz =
        std::min(std::fabs(tone_Hz - lower.tone_Hz), std::fabs(tone_Hz - upper.tone_Hz));
    const bool isBetween =
        tone_Hz > lower.tone_Hz && tone_Hz < upper.tone_Hz && shift_Hz < m_parameters.mostMerged_Hz;
    return (isBetween || offset_Hz < m_parameters.own_Hz) && shift_Hz > m_parameters.nearest_Hz &&
           lower.power < m_parameters.largestRatio * upper.power &&
           upper.power < m_parameters.largestRatio * lower.power;
}

// For how long both are keyed.
double ShiftedPairs::steps(const Opposed& pair) const
{
    const std::vector<float>& a = pair.lower->values;
    const std::vector<float>& b = pair.upper->values;
    double sum = 0.0;
    double squares = 0.0;
    for (std::size_t at = 0; at + PIECE_STEPS <= a.size(); at += PIECE_STEPS) {
        double lower = 0.0;
        double upper = 0.0;
        for (std::size_t i = at; i < at + PIECE_STEPS; ++i) {
            lower += static_cast<double>(a[i] * a[i]);
            upper += static_cast<double>(b[i] * b[i]);
        }
        sum += std::sqrt(lower * upper);
        squares += lower * upper;
    }
    return static_cast<double>(PIECE_STEPS) * sum * sum / std::max(1e-30, squares);
}

// Deviation of the opposition of two keyings that have nothing to do with each other, for so long
// and as quick as these.
double ShiftedPairs::chance(const Opposed& pair, double steps) const
{
    const std::vector<float>& a = pair.lower->values;
    const std::vector<float>& b = pair.upper->values;
    const auto lags = static_cast<std::size_t>(m_parameters.mean_s / m_bank.step_s());
    const double powers = productOf(a, a, 0) * productOf(b, b, 0);
    double alike = 1.0; // steps that go together, in each
    for (std::size_t lag = 1; lag < std::min(lags, a.size()); ++lag)
        alike += 2.0 * productOf(a, a, lag) * productOf(b, b, lag) / powers;
    return std::sqrt(std::max(1.0, alike) / steps);
}

// Filters are wider than what the survey resolves.
double ShiftedPairs::toneNear(double tone_Hz) const
{
    const auto found =
        m_survey.findNear(tone_Hz, OWN_SPACINGS * m_bank.spacing_Hz(), Survey::KEPT_FRAMES);
    return found ? found->tone_Hz : tone_Hz;
}

std::optional<ShiftedPair> ShiftedPairs::find(double tone_Hz, std::int64_t end_step) const
{
    const std::vector<Swing> swings = swingsAround(tone_Hz, end_step);
    std::optional<Opposed> best;
    double most = 0.0;
    for (auto lower = swings.begin(); lower != swings.end(); ++lower) {
        for (auto upper = lower + 1; upper != swings.end(); ++upper) {
            if (!mayBePair(tone_Hz, *lower, *upper))
                continue;
            const double against = -productOf(lower->values, upper->values, 0) /
                                   static_cast<double>(lower->values.size());
            const double opposition = against / std::sqrt(lower->power * upper->power);
            if (against > most && opposition > m_parameters.leastOpposition) {
                most = against;
                best = Opposed{&*lower, &*upper, opposition};
            }
        }
    }
    if (!best)
        return std::nullopt;
    const double keyed_steps = steps(*best);
    const double deviations = best->opposition / chance(*best, keyed_steps);
    if (deviations < m_parameters.doubtful)
        return std::nullopt;
    const bool isSure =
        deviations > m_parameters.sure && keyed_steps * m_bank.step_s() > m_parameters.leastKeyed_s;
    return ShiftedPair{toneNear(best->lower->tone_Hz), toneNear(best->upper->tone_Hz), isSure};
}

} // namespace demodulator
