// SPDX-License-Identifier: MIT
#include "signal/morse/baseband.h"

#include "signal/numbers.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

Baseband::Baseband(double rate_Hz, double tone_Hz)
    : m_rate_Hz(rate_Hz)
    , m_tone_Hz(tone_Hz)
    , m_stepSamples(stepSamplesAt(rate_Hz))
{
    const int length = WINDOW_STEPS * m_stepSamples;
    for (int n = 0; n < length; ++n) {
        const double value = 1.0 - std::cos(2.0 * PI * (n + 0.5) / length);
        m_window.push_back(static_cast<float>(value / length));
    }
    m_samples.resize(m_window.size());
}

int Baseband::stepSamplesAt(double rate_Hz)
{
    return std::max(1, static_cast<int>(std::lround(STEP_s * rate_Hz)));
}

std::int64_t Baseband::neededEnd(std::int64_t step) const
{
    return step * m_stepSamples - static_cast<std::int64_t>(m_window.size() / 2) +
           static_cast<std::int64_t>(m_window.size());
}

Step Baseband::step(const SampleHistory& history, std::int64_t step)
{
    const auto half = static_cast<std::int64_t>(m_window.size() / 2);
    history.copy(step * m_stepSamples - half, m_samples.size(), m_samples.data());
    const double advance = 2.0 * PI * m_tone_Hz / m_rate_Hz;
    const std::complex<double> turn = std::polar(1.0, -advance);
    std::complex<double> carrier =
        std::polar(1.0, -(m_phase - advance * static_cast<double>(half)));
    std::complex<double> sum = 0.0;
    double power = 0.0;
    for (std::size_t n = 0; n < m_samples.size(); ++n) {
        const double weighted = static_cast<double>(m_samples[n] * m_window[n]);
        power += weighted * static_cast<double>(m_samples[n]);
        sum += weighted * carrier;
        carrier = {carrier.real() * turn.real() - carrier.imag() * turn.imag(),
                   carrier.real() * turn.imag() + carrier.imag() * turn.real()};
    }
    m_phase = std::fmod(m_phase + advance * m_stepSamples, 2.0 * PI);
    return {sum, std::max(0.0, power - 2.0 * std::norm(sum)) / m_stepSamples, m_tone_Hz};
}

} // namespace demodulator
