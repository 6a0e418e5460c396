// SPDX-License-Identifier: MIT
// The power of a whole band over time and frequency, computed as its samples come.
#pragma once

#include "signal/band/stepbank.h"
#include "signal/samples/powerspectra.h"
#include "station/picture/notes.h"

#include <kiss_fft.h>

#include <complex>
#include <memory>
#include <vector>

namespace inspect {

/// A picture's powers grow with the stretch and with `rows`, not with the width of the band.
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

    int columns() const { return static_cast<int>(m_powers_dB.size()) / m_rows; }
    int rows() const { return m_rows; }
    /// Of the lower edge of the lowest row, and of the upper edge of the highest.
    double lowest_Hz() const { return m_lowest_Hz; }
    double highest_Hz() const { return m_highest_Hz; }
    /// `rows()` powers a column, the highest frequency first; full-scale tone: 0 dB. Of the
    /// frequencies of a row the strongest counts, so that no signal is lost between two.
    const std::vector<float>& powers_dB() const { return m_powers_dB; }

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
    int m_rows;
    double m_lowest_Hz;
    double m_highest_Hz;
    demodulator::Window m_window;
    double m_fullScale;
    std::unique_ptr<kiss_fft_state, void (*)(void*)> m_transform;
    std::vector<std::complex<float>> m_input;
    std::vector<std::complex<float>> m_output;
    std::vector<float> m_powers_dB;
};

} // namespace inspect
