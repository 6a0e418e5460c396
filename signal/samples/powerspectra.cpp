// SPDX-License-Identifier: MIT
#include "signal/samples/powerspectra.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>
#include <kiss_fftr.h>

namespace demodulator {

Window::Window(std::size_t length)
{
    values.reserve(length);
    for (std::size_t n = 0; n < length; ++n) {
        const double value = 0.5 - 0.5 * std::cos(2.0 * PI * (static_cast<double>(n) + 0.5) /
                                                  static_cast<double>(length));
        values.push_back(static_cast<float>(value));
        sum += value;
        squares += value * value;
    }
}

PowerSpectra::PowerSpectra(std::size_t length, std::size_t size, std::int64_t kept)
    : m_window(length)
    , m_size(size)
    , m_kept(kept)
    , m_transform(kiss_fftr_alloc(static_cast<int>(size), 0, nullptr, nullptr), kiss_fftr_free)
    , m_input(size, 0.0F)
    , m_output(size / 2 + 1)
    , m_powers(m_output.size() * static_cast<std::size_t>(kept), 0.0F)
{
}

void PowerSpectra::push(const float* samples)
{
    for (std::size_t n = 0; n < m_window.values.size(); ++n)
        m_input[n] = samples[n] * m_window.values[n];
    kiss_fftr(m_transform.get(), m_input.data(), reinterpret_cast<kiss_fft_cpx*>(m_output.data()));
    float* const powers = &m_powers[static_cast<std::size_t>(m_frames % m_kept) * bins()];
    for (std::size_t bin = 0; bin < bins(); ++bin)
        powers[bin] = std::norm(m_output[bin]);
    ++m_frames;
}

std::int64_t PowerSpectra::available(std::int64_t count) const
{
    return std::min({count, m_frames, m_kept});
}

const float* PowerSpectra::frame(std::int64_t age) const
{
    return &m_powers[static_cast<std::size_t>((m_frames - 1 - age) % m_kept) * bins()];
}

} // namespace demodulator
