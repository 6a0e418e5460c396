// SPDX-License-Identifier: MIT
#include "support/disturbances.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>

namespace testsupport {

namespace {

using demodulator::PI;

} // namespace

double amplitudeOf(double level_dB)
{
    return std::pow(10.0, level_dB / 20.0);
}

double noiseDeviation(double rate_Hz, double snr_dB)
{
    const double power500 = 0.5 / std::pow(10.0, snr_dB / 10.0);
    return std::sqrt(power500 * (rate_Hz / 2.0) / 500.0);
}

Scatter::Scatter(double spread_Hz, Random& random)
{
    for (Ray& ray : m_rays)
        ray = {2.0 * PI * spread_Hz * random.gauss(), 2.0 * PI * random.uniform()};
}

std::complex<double> Scatter::at(double time_s) const
{
    std::complex<double> sum = 0.0;
    for (const Ray& ray : m_rays)
        sum += std::polar(1.0, ray.turn * time_s + ray.phase);
    return sum / std::sqrt(static_cast<double>(m_rays.size()));
}

void addClicks(std::vector<float>& samples, double perSecond, double rate_Hz, Random& random)
{
    const double length_s = static_cast<double>(samples.size()) / rate_Hz;
    const auto count = static_cast<std::size_t>(perSecond * length_s);
    const auto width = static_cast<std::size_t>(0.002 * rate_Hz);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = random.below(samples.size());
        const double level = amplitudeOf(10.0 * random.uniform());
        for (std::size_t n = at; n < std::min(samples.size(), at + width); ++n)
            samples[n] += static_cast<float>(level * random.gauss());
    }
}

std::vector<std::complex<float>>
within(double edge_Hz, const std::vector<std::complex<float>>& samples, double rate_Hz)
{
    constexpr int HALF = 100;
    std::vector<float> taps;
    for (int n = -HALF; n <= HALF; ++n) {
        const double turns = 2.0 * edge_Hz * n / rate_Hz;
        const double sinc = n == 0 ? 1.0 : std::sin(PI * turns) / (PI * turns);
        const double window = 0.5 + 0.5 * std::cos(PI * n / HALF);
        taps.push_back(static_cast<float>(2.0 * edge_Hz / rate_Hz * sinc * window));
    }
    std::vector<std::complex<float>> result(samples.size() - taps.size());
    for (std::size_t n = 0; n < result.size(); ++n) {
        for (std::size_t i = 0; i < taps.size(); ++i)
            result[n] += taps[i] * samples[n + i];
    }
    return result;
}

void normalise(std::vector<float>& samples)
{
    float peak = 1e-6F;
    for (const float sample : samples)
        peak = std::max(peak, std::fabs(sample));
    for (float& sample : samples)
        sample *= 0.9F / peak;
}

} // namespace testsupport
