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

void normalise(std::vector<float>& samples)
{
    float peak = 1e-6F;
    for (const float sample : samples)
        peak = std::max(peak, std::fabs(sample));
    for (float& sample : samples)
        sample *= 0.9F / peak;
}

} // namespace testsupport
