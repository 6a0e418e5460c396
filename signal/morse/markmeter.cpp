// SPDX-License-Identifier: MIT
#include "signal/morse/markmeter.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace demodulator {

MarkMeter::MarkMeter(const MarkLikelihood& steps, const ExpectedTone& tone, double step_s,
                     const ToneParameters& toneParameters, const JudgeParameters& judgeParameters)
    : m_steps(steps)
    , m_tone(tone)
    , m_step_s(step_s)
    , m_toneParameters(toneParameters)
    , m_judgeParameters(judgeParameters)
{
}

HeardMark MarkMeter::measured(std::int64_t begin_step, std::int64_t end_step) const
{
    const std::int64_t now = m_steps.end();
    const std::int64_t length = end_step - begin_step;
    const double middle = 0.5 * static_cast<double>(begin_step + end_step - 1);
    const auto at = static_cast<std::int64_t>(middle);
    const std::int64_t lag = std::max<std::int64_t>(1, length / 3);
    HeardMark mark;
    mark.length_steps = static_cast<double>(length);
    mark.end_s = static_cast<double>(now - end_step) * m_step_s;
    mark.middle_s = (static_cast<double>(now) - middle) * m_step_s;
    mark.sum = m_steps.sum(begin_step, end_step);
    mark.turn = m_steps.advance(begin_step, end_step, lag);
    mark.lag_s = static_cast<double>(lag) * m_step_s;
    mark.wholeTurns = wholeTurns(begin_step, end_step, mark);
    mark.tone_Hz = m_tone.toneAt(at);
    mark.cycles =
        m_tone.cyclesAt(at) + (middle - static_cast<double>(at)) * m_step_s * mark.tone_Hz;
    mark.offset_Hz = offset_Hz(begin_step, end_step);
    if (length >= SHORTEST_STEPS) {
        // The level followed is too low for a tone that is not steady: the mark's own power.
        const double power =
            std::abs(m_steps.advance(begin_step, end_step, 1)) / static_cast<double>(length - 1);
        const std::int64_t half = length / 2;
        mark.bend_Hz =
            offset_Hz(end_step - half, end_step) - offset_Hz(begin_step, begin_step + half);
        mark.bendError_Hz = std::sqrt(2.0) * offsetError_Hz(half, power);
    }
    return mark;
}

bool MarkMeter::isForeign(std::int64_t begin_step, std::int64_t end_step,
                          const ToneSpread& spread) const
{
    return std::fabs(offset_Hz(begin_step, end_step)) >
           m_toneParameters.foreign_Hz + m_toneParameters.spreadOffset * spread.within_Hz;
}

bool MarkMeter::strays(std::int64_t begin_step, std::int64_t end_step,
                       const ToneSpread& spread) const
{
    return std::fabs(offset_Hz(begin_step, end_step)) >
           m_judgeParameters.strayTone_Hz + m_toneParameters.spreadOffset * spread.within_Hz +
               m_judgeParameters.strayErrors *
                   offsetError_Hz(end_step - begin_step, m_steps.level().signal);
}

// How far a mark's own tone is from the one expected, from step to step.
double MarkMeter::offset_Hz(std::int64_t begin_step, std::int64_t end_step) const
{
    if (m_steps.end() - begin_step > MarkLikelihood::KEPT_STEPS)
        return 0.0;
    const std::complex<double> turn = m_steps.advance(begin_step, end_step, 1);
    return std::arg(turn) / (TWO_PI * m_step_s);
}

// What noise does to that: the deviation of the angle between two steps, averaged over a mark.
double MarkMeter::offsetError_Hz(std::int64_t length_steps, double signal) const
{
    const double ratio = std::max(signal, 1e-30) / std::max(m_steps.level().noise, 1e-30);
    const double error =
        std::sqrt((1.0 + 0.5 / ratio) / (ratio * static_cast<double>(length_steps)));
    return error / (TWO_PI * m_step_s);
}

// Of a mark's phase within a lag, where noise leaves no doubt: somebody who answers beside the tone
// turns more than once in a third of a dash.
double MarkMeter::wholeTurns(std::int64_t begin_step, std::int64_t end_step,
                             const HeardMark& mark) const
{
    const double error_Hz = offsetError_Hz(end_step - begin_step, m_steps.level().signal);
    if (m_toneParameters.sureErrors * error_Hz * mark.lag_s > 0.5)
        return 0.0;
    const double within = std::arg(mark.turn) / TWO_PI;
    return std::round(offset_Hz(begin_step, end_step) * mark.lag_s - within);
}

} // namespace demodulator
