// SPDX-License-Identifier: MIT
#include "signal/samples/samples.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

constexpr double WORKING_RATE_Hz = 8000.0; // least rate after decimation; tones go up to 3.5 kHz
constexpr float LARGEST_SAMPLE = 8.0F;     // well over full scale: clipped signals stay clipped

} // namespace

float usableSample(float sample)
{
    return std::isfinite(sample) ? std::clamp(sample, -LARGEST_SAMPLE, LARGEST_SAMPLE) : 0.0F;
}

Decimator::Decimator(double inputRate_Hz)
    : m_factor(std::max(1, static_cast<int>(inputRate_Hz / WORKING_RATE_Hz)))
    , m_outputRate_Hz(inputRate_Hz / m_factor)
{
    if (m_factor == 1) {
        m_taps = {1.0F};
        return;
    }
    const int half = 10 * m_factor;
    const double cutoff = 0.45 / m_factor; // of the input rate
    double sum = 0.0;
    for (int k = -half; k <= half; ++k) {
        const double x = 2.0 * PI * cutoff * k;
        const double sinc = k == 0 ? 1.0 : std::sin(x) / x;
        const double tap = sinc * (0.5 + 0.5 * std::cos(PI * k / (half + 1)));
        m_taps.push_back(static_cast<float>(tap));
        sum += tap;
    }
    for (float& tap : m_taps)
        tap = static_cast<float>(tap / sum);
    m_pending.assign(static_cast<std::size_t>(half), 0.0F);
}

void Decimator::push(const float* samples, std::size_t count, std::vector<float>& output)
{
    for (std::size_t i = 0; i < count; ++i)
        m_pending.push_back(usableSample(samples[i]));
    const std::size_t step = static_cast<std::size_t>(m_factor);
    std::size_t start = 0;
    for (; start + m_taps.size() <= m_pending.size(); start += step) {
        float sum = 0.0F;
        for (std::size_t k = 0; k < m_taps.size(); ++k)
            sum += m_taps[k] * m_pending[start + k];
        output.push_back(sum);
    }
    start = std::min(start, m_pending.size());
    m_pending.erase(m_pending.begin(), m_pending.begin() + static_cast<std::ptrdiff_t>(start));
}

void Decimator::flush(std::vector<float>& output)
{
    const std::vector<float> silence(m_taps.size() / 2, 0.0F);
    push(silence.data(), silence.size(), output);
}

SampleHistory::SampleHistory(std::size_t capacity)
{
    std::size_t size = 1;
    while (size < capacity)
        size *= 2;
    m_ring.assign(size, 0.0F);
}

void SampleHistory::push(const float* samples, std::size_t count)
{
    const std::size_t mask = m_ring.size() - 1;
    for (std::size_t i = 0; i < count; ++i)
        m_ring[static_cast<std::size_t>(m_end++) & mask] = samples[i];
}

std::int64_t SampleHistory::begin() const
{
    return std::max<std::int64_t>(0, m_end - static_cast<std::int64_t>(m_ring.size()));
}

void SampleHistory::copy(std::int64_t from, std::size_t count, float* output) const
{
    const std::size_t mask = m_ring.size() - 1;
    const std::int64_t first = begin();
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t index = from + static_cast<std::int64_t>(i);
        output[i] =
            index >= first && index < m_end ? m_ring[static_cast<std::size_t>(index) & mask] : 0.0F;
    }
}

} // namespace demodulator
