// SPDX-License-Identifier: MIT
#include "station/picture/waterfall.h"

#include <algorithm>
#include <cmath>

namespace inspect {

namespace {

constexpr double SILENCE = 1e-14; // -140 dB

} // namespace

Waterfall::Waterfall(const demodulator::BandFormat& format, const Stretch& stretch,
                     double lowest_Hz, double highest_Hz, int maxRows)
    : m_isComplex(format.isComplex)
    , m_column(COLUMN_s * format.rate_Hz)
    , m_length(static_cast<std::size_t>(m_column))
    , m_size(static_cast<std::size_t>(kiss_fft_next_fast_size(static_cast<int>(m_length))))
    , m_next(-std::llround(static_cast<double>(stretch.from_us) * 1e-6 * format.rate_Hz))
    , m_end(std::llround(static_cast<double>(stretch.to_us - stretch.from_us) * 1e-6 *
                         format.rate_Hz))
    , m_window(m_length)
    , m_transform(kiss_fft_alloc(static_cast<int>(m_size), 0, nullptr, nullptr), kiss_fft_free)
    , m_output(m_size)
{
    const double bin_Hz = format.rate_Hz / static_cast<double>(m_size);
    const auto last = static_cast<long>(m_size / 2) - 1;
    const auto binOf = [&](double frequency_Hz) {
        return std::clamp(std::lround(frequency_Hz / bin_Hz), m_isComplex ? -last : 0L, last);
    };
    m_firstBin = binOf(lowest_Hz);
    m_lastBin = binOf(highest_Hz);
    m_powers.rows = static_cast<int>(std::min<long>(maxRows, m_lastBin - m_firstBin + 1));
    m_powers.lowest_Hz = (static_cast<double>(m_firstBin) - 0.5) * bin_Hz;
    m_powers.highest_Hz = (static_cast<double>(m_lastBin) + 0.5) * bin_Hz;
    m_fullScale = (m_isComplex ? 1.0 : 0.25) * m_window.sum * m_window.sum;
    m_input.reserve(m_size);
}

void Waterfall::push(const std::complex<float>* samples, std::size_t count)
{
    for (std::size_t n = 0; n < count && m_next < m_end; ++n, ++m_next) {
        // Columns begin when they should, though no whole number of samples lies between them.
        if (m_next < std::llround(m_begun * m_column) && m_input.empty())
            continue;
        m_input.push_back(samples[n] * m_window.values[m_input.size()]);
        if (m_input.size() == m_length)
            addColumn();
    }
}

void Waterfall::addColumn()
{
    ++m_begun;
    m_input.resize(m_size, 0.0F);
    kiss_fft(m_transform.get(), reinterpret_cast<const kiss_fft_cpx*>(m_input.data()),
             reinterpret_cast<kiss_fft_cpx*>(m_output.data()));
    m_input.clear();
    const auto size = static_cast<long>(m_size);
    const long bins = m_lastBin - m_firstBin + 1;
    for (int row = 0; row < m_powers.rows; ++row) {
        const long to = m_lastBin - bins * row / m_powers.rows;
        const long from = m_lastBin - bins * (row + 1) / m_powers.rows + 1;
        float strongest = 0.0F;
        for (long bin = from; bin <= to; ++bin)
            strongest = std::max(
                strongest, std::norm(m_output[static_cast<std::size_t>((bin + size) % size)]));
        m_powers.powers_dB.push_back(static_cast<float>(
            10.0 * std::log10(static_cast<double>(strongest) / m_fullScale + SILENCE)));
    }
}

} // namespace inspect
