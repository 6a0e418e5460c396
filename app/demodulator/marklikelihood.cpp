// SPDX-License-Identifier: MIT
#include "app/demodulator/marklikelihood.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

// The amplitude of a single mark, relative to that followed, and the logarithm of its probability.
constexpr double AMPLITUDES[3] = {0.62, 1.0, 1.5};
constexpr double WEIGHTS[3] = {-1.4, -0.7, -1.6};
// A strong signal is not trusted beyond this signal-to-noise ratio of one step: rising edges,
// fading and clicks are no noise that the model knows, and lengths have to count beside levels.
constexpr double LARGEST_RATIO = 3.0;

} // namespace

double logBesselI0(double x)
{
    if (x < 3.0) {
        const double q = x * x / 4.0;
        return std::log1p(q * (1.0 + q * (0.25 + q * (1.0 / 36 + q * (1.0 / 576 + q / 14400)))));
    }
    // Asymptotic series, better than 1 % of its value here and exact for large x.
    return x - 0.5 * std::log(6.283185307179586 * x) + 0.125 / x + 0.0703 / (x * x);
}

MarkLikelihood::MarkLikelihood()
    : m_steps(KEPT_STEPS)
    , m_sums(KEPT_STEPS + 1)
{
}

void MarkLikelihood::push(std::complex<double> step)
{
    const auto size = static_cast<std::int64_t>(m_sums.size());
    m_steps[static_cast<std::size_t>(m_end % KEPT_STEPS)] = step;
    m_sums[static_cast<std::size_t>((m_end + 1) % size)] =
        m_sums[static_cast<std::size_t>(m_end % size)] + step;
    ++m_end;
}

std::complex<double> MarkLikelihood::sum(std::int64_t begin, std::int64_t end) const
{
    const auto size = static_cast<std::int64_t>(m_sums.size());
    return m_sums[static_cast<std::size_t>(end % size)] -
           m_sums[static_cast<std::size_t>(begin % size)];
}

std::complex<double> MarkLikelihood::advance(std::int64_t begin, std::int64_t end,
                                             std::int64_t lag) const
{
    std::complex<double> result = 0.0;
    for (std::int64_t n = begin + lag; n < end; ++n) {
        result += m_steps[static_cast<std::size_t>(n % KEPT_STEPS)] *
                  std::conj(m_steps[static_cast<std::size_t>((n - lag) % KEPT_STEPS)]);
    }
    return result;
}

void MarkLikelihood::setLevel(const Level& level)
{
    m_level = level;
    const double noise = std::max({level.noise, level.signal / LARGEST_RATIO, 1e-30});
    for (int i = 0; i < 3; ++i) {
        const double amplitude = AMPLITUDES[i] * std::sqrt(level.signal);
        m_energyPerStep[i] = amplitude * amplitude / noise;
        m_slope[i] = 2.0 * amplitude / noise;
        m_weight[i] = WEIGHTS[i];
    }
}

float MarkLikelihood::ratio(std::int64_t length) const
{
    if (length > m_end)
        return -1e9F;
    const double magnitude = std::abs(sum(m_end - length, m_end));
    double best = -1e9;
    for (int i = 0; i < 3; ++i) {
        best = std::max(best, m_weight[i] - static_cast<double>(length) * m_energyPerStep[i] +
                                  logBesselI0(m_slope[i] * magnitude));
    }
    return static_cast<float>(best);
}

} // namespace demodulator
