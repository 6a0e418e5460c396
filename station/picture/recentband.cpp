// SPDX-License-Identifier: MIT
#include "station/picture/recentband.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace inspect {

namespace {

// A power as a byte.
constexpr double LOWEST_POWER_dB = -140.0;
constexpr double POWER_STEP_dB = 0.6; // finer than a shade of a picture

constexpr Stretch FOR_YEARS = {0, 1000000000000000};

std::uint8_t byteOf(float power_dB)
{
    return static_cast<std::uint8_t>(std::clamp(
        std::round((static_cast<double>(power_dB) - LOWEST_POWER_dB) / POWER_STEP_dB), 0.0, 255.0));
}

float powerOf(std::uint8_t byte)
{
    return static_cast<float>(LOWEST_POWER_dB + POWER_STEP_dB * byte);
}

double columnsIn(std::int64_t time_us)
{
    return static_cast<double>(time_us) * 1e-6 / Waterfall::COLUMN_s;
}

} // namespace

RecentBand::RecentBand(const demodulator::BandFormat& format, double lowest_Hz, double highest_Hz,
                       std::int64_t kept_us, std::size_t mostBytes)
    : m_waterfall(format, FOR_YEARS, lowest_Hz, highest_Hz, std::numeric_limits<int>::max())
    , m_rows(static_cast<std::size_t>(m_waterfall.powers().rows))
    , m_kept(std::min(static_cast<std::size_t>(std::ceil(columnsIn(kept_us))), mostBytes / m_rows))
{
    m_ring.reserve(m_kept * m_rows);
}

void RecentBand::push(const std::complex<float>* samples, std::size_t count)
{
    m_waterfall.push(samples, count);
    const std::vector<float> powers_dB = m_waterfall.takePowers();
    for (auto column = powers_dB.begin(); column != powers_dB.end();
         column += static_cast<std::ptrdiff_t>(m_rows), ++m_count) {
        const std::size_t place = static_cast<std::size_t>(m_count) % m_kept * m_rows;
        m_ring.resize(std::max(m_ring.size(), place + m_rows));
        std::transform(column, column + static_cast<std::ptrdiff_t>(m_rows),
                       m_ring.begin() + static_cast<std::ptrdiff_t>(place), byteOf);
    }
}

BandPowers RecentBand::cut(Stretch& stretch, double lowest_Hz, double highest_Hz) const
{
    const BandPowers& all = m_waterfall.powers();
    const double row_Hz = (all.highest_Hz - all.lowest_Hz) / static_cast<double>(m_rows);
    const auto rowAt = [&](double frequency_Hz) {
        return static_cast<std::size_t>(std::clamp((all.highest_Hz - frequency_Hz) / row_Hz, 0.0,
                                                   static_cast<double>(m_rows - 1)));
    };
    const std::size_t first = rowAt(highest_Hz);
    const std::size_t last = rowAt(lowest_Hz);
    BandPowers part;
    part.rows = static_cast<int>(last - first + 1);
    part.highest_Hz = all.highest_Hz - static_cast<double>(first) * row_Hz;
    part.lowest_Hz = all.highest_Hz - static_cast<double>(last + 1) * row_Hz;

    const std::int64_t oldest =
        std::max<std::int64_t>(0, m_count - static_cast<std::int64_t>(m_kept));
    const auto columnAt = [&](double columns) {
        return std::clamp(static_cast<std::int64_t>(columns), oldest, m_count);
    };
    const std::int64_t from = columnAt(std::floor(columnsIn(stretch.from_us)));
    const std::int64_t to = columnAt(std::ceil(columnsIn(stretch.to_us)));
    for (std::int64_t column = from; column < to; ++column) {
        const auto top = m_ring.begin() + static_cast<std::ptrdiff_t>(
                                              static_cast<std::size_t>(column) % m_kept * m_rows);
        std::transform(top + static_cast<std::ptrdiff_t>(first),
                       top + static_cast<std::ptrdiff_t>(last + 1),
                       std::back_inserter(part.powers_dB), powerOf);
    }
    const auto timeOf = [](std::int64_t column) {
        return std::llround(static_cast<double>(column) * Waterfall::COLUMN_s * 1e6);
    };
    stretch = {timeOf(from), timeOf(to)};
    return part;
}

} // namespace inspect
