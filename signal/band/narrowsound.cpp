// SPDX-License-Identifier: MIT
#include "signal/band/narrowsound.h"

#include "signal/numbers.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

// Samples of the sound in a step: as few as its width allows, since each costs as much as the sound
// has filters.
constexpr std::size_t NARROW_STEP = 16;
constexpr std::size_t WIDE_STEP = 32;
// As much of the lower rate as the widest part takes of the higher one.
constexpr double NARROW_Hz = MOST_NARROW_Hz * NARROW_STEP / WIDE_STEP;

} // namespace

NarrowSound::NarrowSound(const StepBank& bank, double lowest_Hz, double highest_Hz,
                         std::int64_t begin_step)
    : m_bank(bank)
    , m_step(highest_Hz - lowest_Hz > NARROW_Hz ? WIDE_STEP : NARROW_STEP)
    , m_rate_Hz(static_cast<double>(m_step) / bank.step_s())
    , m_first(static_cast<long>(std::floor(lowest_Hz / bank.spacing_Hz())))
    , m_filters(static_cast<std::size_t>(
          std::max(1L, std::lround((highest_Hz - lowest_Hz) / bank.spacing_Hz()) + 1)))
    , m_base_Hz(static_cast<double>(m_first) * bank.spacing_Hz())
    , m_begin_s((static_cast<double>(begin_step) - 0.5 * WINDOW_STEPS) * bank.step_s())
    , m_next(begin_step)
    , m_scale(bank.scale())
    , m_sum(WINDOW_STEPS * m_step, 0.0F)
{
    const std::size_t window = m_sum.size();
    for (std::size_t n = 0; n < window; ++n) {
        const double time_s =
            (static_cast<double>(n) - 0.5 * static_cast<double>(window)) / m_rate_Hz;
        for (std::size_t k = 0; k < m_filters; ++k)
            m_waves.emplace_back(
                std::polar(1.0, TWO_PI * static_cast<double>(k) * bank.spacing_Hz() * time_s));
    }
}

void NarrowSound::read(std::int64_t end_step, std::vector<float>& samples)
{
    std::vector<std::complex<float>> filters(m_filters);
    for (; m_next < end_step; ++m_next) {
        // The tone that becomes 0 Hz has turned so far at the middle of the step.
        const std::complex<float> turn(
            std::polar(m_scale, -TWO_PI * m_bank.turnsOf(m_first, m_next)));
        for (std::size_t k = 0; k < m_filters; ++k)
            filters[k] = turn * m_bank.filter(m_next, m_first + static_cast<long>(k));
        const std::complex<float>* wave = m_waves.data();
        for (float& sum : m_sum) {
            for (const std::complex<float>& filter : filters) {
                sum += filter.real() * wave->real() - filter.imag() * wave->imag();
                ++wave;
            }
        }
        const auto step = static_cast<std::ptrdiff_t>(m_step);
        samples.insert(samples.end(), m_sum.begin(), m_sum.begin() + step);
        std::copy(m_sum.begin() + step, m_sum.end(), m_sum.begin());
        std::fill(m_sum.end() - step, m_sum.end(), 0.0F);
    }
}

} // namespace demodulator
