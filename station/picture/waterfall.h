// SPDX-License-Identifier: MIT
// The power of a whole band over time and frequency, computed as its samples come.
#pragma once

#include "signal/band/stepbank.h"
#include "signal/samples/powerspectra.h"
#include "station/picture/notes.h"

#include <kiss_fft.h>

#include <complex>
#include <memory>
#include <utility>
#include <vector>

namespace inspect {

/// The power of a part of a band over time, full-scale tone: 0 dB.
struct BandPowers
{
    int rows = 0;
    double lowest_Hz = 0.0;       ///< lower edge of the lowest row
    double highest_Hz = 0.0;      ///< upper edge of the highest
    std::vector<float> powers_dB; ///< column by column, in each the highest frequency first

    int columns() const { return rows > 0 ? static_cast<int>(powers_dB.size()) / rows : 0; }
};

/// Powers grow with the stretch and with `maxRows`, not with the width of the band. Of the
/// frequencies of a row the strongest counts, so that no signal is lost between two.
class Waterfall
{
public:
    /// A column for so long.
    static constexpr double COLUMN_s = 1.0 / 24.0;

    /// Between `lowest_Hz` and `highest_Hz`, as far as the band has them, in at most `maxRows`
    /// rows. Samples before and after the stretch are passed over.
    Waterfall(const demodulator::BandFormat& format, const Stretch& stretch, double lowest_Hz,
              double highest_Hz, int maxRows);

    void push(const std::complex<float>* samples, std::size_t count);

    const BandPowers& powers() const { return m_powers; }
    /// Those of the columns since the last call, which are forgotten.
    std::vector<float> takePowers() { return std::exchange(m_powers.powers_dB, {}); }

private:
    void addColumn();

    bool m_isComplex;
    double m_column;      ///< samples of a column
    std::size_t m_length; ///< whole ones
    std::size_t m_size;   ///< of the transform
    std::int64_t m_next;  ///< sample, counted from the begin of the stretch
    std::int64_t m_end;   ///< of the stretch
    double m_begun = 0.0; ///< columns that are done
    long m_firstBin;
    long m_lastBin;
    BandPowers m_powers;
    demodulator::Window m_window;
    double m_fullScale;
    std::unique_ptr<kiss_fft_state, void (*)(void*)> m_transform;
    std::vector<std::complex<float>> m_input;
    std::vector<std::complex<float>> m_output;
};

} // namespace inspect
