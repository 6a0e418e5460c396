// SPDX-License-Identifier: MIT
#include "signal/band/stationchange.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

// A quantity of a mark is the better known the longer the mark is.
struct Measured
{
    double value;
    double weight;
};

struct Mean
{
    double value = 0.0;
    double weight = 0.0;
    double scatter = 0.0; // sum of weighted squares around it
};

Measured tone(const StationMark& mark)
{
    const auto length = static_cast<double>(mark.end_step - mark.begin_step);
    return {mark.tone_Hz, length * length * length};
}

Measured level_dB(const StationMark& mark)
{
    return {10.0 * std::log10(std::max(mark.signal, 1e-30)),
            static_cast<double>(mark.end_step - mark.begin_step)};
}

template <typename Marks, typename Quantity>
Mean meanOf(const Marks& marks, Quantity quantity)
{
    Mean mean;
    for (const StationMark& mark : marks) {
        const Measured measured = quantity(mark);
        mean.value += measured.weight * measured.value;
        mean.weight += measured.weight;
    }
    mean.value /= mean.weight;
    for (const StationMark& mark : marks) {
        const Measured measured = quantity(mark);
        mean.scatter += measured.weight * std::pow(measured.value - mean.value, 2.0);
    }
    return mean;
}

// Further apart than chance makes it, and than one station does.
template <typename A, typename B, typename Quantity>
bool differ(const A& a, const B& b, Quantity quantity, double least, double deviations)
{
    const Mean first = meanOf(a, quantity);
    const Mean second = meanOf(b, quantity);
    const double unitVariance =
        (first.scatter + second.scatter) / static_cast<double>(a.size() + b.size() - 2);
    const double deviation = std::sqrt(unitVariance * (1.0 / first.weight + 1.0 / second.weight));
    return std::fabs(first.value - second.value) > std::max(least, deviations * deviation);
}

} // namespace

StationChange::Verdict StationChange::add(const StationMark& mark)
{
    const std::int64_t last = m_others.empty() ? m_lastOwn : m_others.back().end_step;
    const double pause_steps = static_cast<double>(mark.begin_step - last);
    const bool pause = pause_steps > std::max(m_parameters.leastPause_s / m_step_s,
                                              m_parameters.leastPause_units * mark.unit_steps);
    // A second pause before the first was judged: what lies between may be enough.
    if (m_others.size() >= m_parameters.leastMarks && pause && decide() == Verdict::Other)
        return Verdict::Other;
    if (m_others.empty() && (!pause || m_own.size() < m_parameters.judgedMarks)) {
        m_own.push_back(mark);
        if (m_own.size() > m_parameters.kept_marks)
            m_own.pop_front();
        m_lastOwn = mark.end_step;
        return Verdict::Same;
    }
    m_others.push_back(mark);
    return m_others.size() < m_parameters.judgedMarks ? Verdict::Waiting : decide();
}

StationChange::Verdict StationChange::decide()
{
    if (m_others.empty())
        return Verdict::Same;
    if (m_others.size() >= m_parameters.leastMarks && areOther())
        return Verdict::Other;
    for (const StationMark& mark : m_others)
        m_own.push_back(mark);
    while (m_own.size() > m_parameters.kept_marks)
        m_own.pop_front();
    m_lastOwn = m_others.back().end_step;
    m_others.clear();
    return Verdict::Same;
}

bool StationChange::areOther() const
{
    return differ(m_own, m_others, tone, m_parameters.leastTone_Hz, m_parameters.deviations) ||
           differ(m_own, m_others, level_dB, m_parameters.leastLevel_dB, m_parameters.deviations);
}

} // namespace demodulator
