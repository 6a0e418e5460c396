// SPDX-License-Identifier: MIT
#include "signal/morse/morsejudge.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

MorseJudge::MorseJudge(const JudgeParameters& parameters)
    : m_parameters(parameters)
{
}

void MorseJudge::mark(const Mark& mark)
{
    const double keep = 1.0 - 1.0 / m_parameters.memory_marks;
    for (double* count : {&m_marks, &m_between, &m_long, &m_wide, &m_foreign, &m_dots, &m_dashes,
                          &m_innerGaps, &m_dotLengths, &m_dotSquares})
        *count *= keep;
    m_marks += 1.0;
    m_wide += mark.gap_units > m_parameters.longestDash_units ? 1.0 : 0.0;
    if (mark.isForeign) {
        m_foreign += 1.0;
        return;
    }
    if (mark.length_units < m_parameters.longestDot_units) {
        const double grid = m_parameters.resolution_steps / std::max(1.0, mark.unit_steps);
        m_dots += 1.0;
        m_dotLengths += mark.length_units;
        m_dotSquares += mark.length_units * mark.length_units - grid * grid;
    } else if (mark.length_units < m_parameters.shortestDash_units)
        m_between += 1.0;
    else if (mark.length_units < m_parameters.longestDash_units)
        m_dashes += 1.0;
    else
        m_long += 1.0;
    if (mark.gap_units > 0.0 && mark.gap_units < m_parameters.longestInnerGap_units)
        m_innerGaps += 1.0;
}

// More than a share of all marks, by more than so many deviations of the number expected.
bool MorseJudge::isMore(double count, double share, double deviations) const
{
    const double expected = share * m_marks;
    return count > 0.5 + expected + deviations * std::sqrt(expected * (1.0 - share));
}

bool MorseJudge::isOdd(double deviations, double mostAlone) const
{
    // Squares of normal deviations scatter by sqrt(2 / n) of their mean.
    const double allowed = m_parameters.mostDotDeviation_units *
                           m_parameters.mostDotDeviation_units *
                           (m_dots + deviations * std::sqrt(2.0 * m_dots));
    return isMore(m_between, m_parameters.mostBetween, deviations) ||
           isMore(m_long, m_parameters.mostLong, deviations) ||
           isMore(m_foreign, m_parameters.mostForeign, deviations) ||
           isMore(m_marks - m_innerGaps, mostAlone, deviations) ||
           m_dotSquares - m_dotLengths * m_dotLengths / std::max(1.0, m_dots) > allowed;
}

MorseJudge::Side MorseJudge::side() const
{
    if (m_long == m_wide)
        return Side::Unknown;
    return m_long > m_wide ? Side::Space : Side::Mark;
}

MorseJudge::Verdict MorseJudge::verdict() const
{
    if (m_marks >= m_parameters.leastMarks &&
        isOdd(m_parameters.deviations, m_parameters.mostAlone))
        return Verdict::Other;
    const double mostAlone =
        m_marks < m_parameters.leastMarks ? m_parameters.usuallyAlone : m_parameters.mostAlone;
    // Dots alone are what a row of equal tones looks like.
    if (!(m_innerGaps > 0.0) || !(m_dashes > 0.0) || isOdd(0.0, mostAlone))
        return Verdict::Unsure;
    return m_dots > 0.0 ? Verdict::Morse : Verdict::Dashes;
}

} // namespace demodulator
