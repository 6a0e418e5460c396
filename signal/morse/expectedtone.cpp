// SPDX-License-Identifier: MIT
#include "signal/morse/expectedtone.h"

#include "signal/numbers.h"

#include <cmath>

namespace demodulator {

ExpectedTone::ExpectedTone(double tone_Hz, double step_s, std::int64_t kept_steps)
    : m_tone_Hz(tone_Hz)
    , m_step_s(step_s)
    , m_tones(static_cast<std::size_t>(kept_steps))
    , m_cycles(static_cast<std::size_t>(kept_steps))
{
}

std::complex<double> ExpectedTone::turn(const Step& step)
{
    m_tones[slot(m_end)] = static_cast<float>(m_tone_Hz);
    m_cycles[slot(m_end)] = m_nextCycles;
    ++m_end;
    m_nextCycles += m_tone_Hz * m_step_s;
    std::complex<double> value = step.value;
    if (m_mixedAside_cycles != 0.0)
        value *= std::polar(1.0, TWO_PI * m_mixedAside_cycles);
    m_mixedAside_cycles =
        std::remainder(m_mixedAside_cycles + (step.tone_Hz - m_tone_Hz) * m_step_s, 1.0);
    return value;
}

} // namespace demodulator
