// SPDX-License-Identifier: MIT
#include "signal/morse/decider.h"

#include <cmath>

namespace demodulator {

Decider::Decider(TimingModel& timing, Classifier& classifier, const DecisionParameters& parameters,
                 double step_s, std::int64_t origin)
    : m_timing(timing)
    , m_classifier(classifier)
    , m_parameters(parameters)
    , m_step_us(1e6 * step_s)
    , m_origin(origin)
{
}

std::int64_t Decider::time_us(std::int64_t step) const
{
    // Boundaries lie halfway between the centres of two steps.
    return std::llround((static_cast<double>(m_origin + step) - 0.5) * m_step_us);
}

void Decider::emitMark(const Segment& mark, const Heard& heard)
{
    if (std::fabs(std::log(mark.unit_steps / m_unit_steps)) > m_parameters.otherHand)
        m_timing.forget();
    m_unit_steps = mark.unit_steps;
    if (m_gap) {
        m_timing.learn(m_gap->kind, m_gap->units);
        m_gap.reset();
    }
    m_classifier.mark({mark.kind, time_us(mark.begin_step), time_us(mark.end_step),
                       mark.unit_steps * m_step_us, heard.tone_Hz, heard.snr});
    const auto length_steps = static_cast<double>(mark.end_step - mark.begin_step);
    m_timing.learn(mark.kind, length_steps / mark.unit_steps);
    m_emitted = mark.end_step;
}

void Decider::emitUntil(const Path& path, const std::vector<bool>& isForeign, std::int64_t now,
                        std::int64_t until, const Heard& heard)
{
    for (std::size_t i = 0; i < path.segments.size(); ++i) {
        const Segment& segment = path.segments[i];
        const bool isOpen = i + 1 == path.segments.size();
        // Where a mark or space begins may still move a little: what lies mostly before the end of
        // the last mark that was emitted has been emitted.
        if ((segment.begin_step + segment.end_step) / 2 < m_emitted)
            continue;
        if (isMark(segment.kind)) {
            if (isOpen || segment.end_step > until)
                break;
            if (!isForeign[i])
                emitMark(segment, heard);
            continue;
        }
        if (segment.begin_step > until)
            break;
        const double unit_us = segment.unit_steps * m_step_us;
        const auto length_steps = static_cast<double>(segment.end_step - segment.begin_step);
        const double length_us = length_steps * m_step_us;
        if (isOpen || length_us > Classifier::endingSilence_us(unit_us)) {
            m_classifier.gapSoFar(length_us, unit_us, m_timing.characterThreshold(),
                                  m_timing.wordThreshold());
            break;
        }
        m_classifier.gap(segment.kind);
        m_gap = Gap{segment.kind, length_steps / segment.unit_steps};
    }
    const auto since = static_cast<std::int64_t>(1e6 * m_parameters.learning_s / m_step_us);
    if (m_emitted > m_learnt && now >= m_learnt + since) {
        m_timing.update(m_unit_steps, heard.dot);
        m_learnt = now;
    }
}

} // namespace demodulator
