// SPDX-License-Identifier: MIT
// The power of a whole band over its last minutes, for pictures of what has just been heard.
#pragma once

#include "station/picture/sound.h"
#include "station/picture/waterfall.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace inspect {

/// Memory is bounded: of a wide band less time is kept.
class RecentBand
{
public:
    /// Of memory; a power takes one. Two minutes of 500 kHz.
    static constexpr std::size_t MOST_BYTES = std::size_t{64} << 20;

    /// Between `lowest_Hz` and `highest_Hz`, as far as the band has them.
    RecentBand(const demodulator::BandFormat& format, double lowest_Hz, double highest_Hz,
               std::int64_t kept_us, std::size_t mostBytes = MOST_BYTES);

    void push(const std::complex<float>* samples, std::size_t count);

    /// What is kept of a passage, between such frequencies as far as they are there; `stretch` ends
    /// up as what that is. No columns where nothing of it is kept.
    BandPowers cut(Stretch& stretch, double lowest_Hz, double highest_Hz) const;

private:
    Waterfall m_waterfall;
    std::size_t m_rows;
    std::size_t m_kept;               ///< columns at most
    std::int64_t m_count = 0;         ///< of columns since the first sample
    std::vector<std::uint8_t> m_ring; ///< column `n` stands at `n % m_kept`
};

} // namespace inspect
