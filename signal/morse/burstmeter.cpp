// SPDX-License-Identifier: MIT
#include "signal/morse/burstmeter.h"

#include <algorithm>
#include <limits>

namespace demodulator {

BurstMeter::BurstMeter(const BurstParameters& parameters, double step_s, double usualRest)
    : m_parameters(parameters)
    , m_step_s(step_s)
    , m_usual(usualRest)
{
}

double BurstMeter::noiseOf(double rest, double noise)
{
    const bool isMuted = rest <= m_parameters.muted * m_usual;
    m_mutedShare += ((isMuted ? 1.0 : 0.0) - m_mutedShare) * m_step_s / m_parameters.usual_s;
    m_mutedSteps = isMuted ? m_mutedSteps + 1 : 0;
    if (isMuted) {
        const bool isLost = m_mutedShare < m_parameters.mostLost &&
                            m_mutedSteps * m_step_s < m_parameters.longestLoss_s;
        return isLost ? std::numeric_limits<double>::infinity() : 0.0;
    }
    const double first = 1.0 / ++m_steps;
    m_usual += (std::min(rest, m_parameters.burst * m_usual) - m_usual) *
               std::max(m_step_s / m_parameters.usual_s, first);
    m_mean += (rest - m_mean) * std::max(m_step_s / m_parameters.mean_s, first);
    if (rest <= m_parameters.burst * m_usual)
        return 0.0;
    // As much as that power would be if it were spread evenly; where a receiver's filter leaves
    // less of it than of what is near the tone, as many times more.
    return rest * std::max(1.0, noise / m_mean);
}

} // namespace demodulator
