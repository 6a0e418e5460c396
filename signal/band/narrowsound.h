// SPDX-License-Identifier: MIT
// A part of the band as sound again, for receivers that listen to sound: the filters of the bank,
// put together.
#pragma once

#include "signal/band/stepbank.h"

#include <complex>
#include <cstdint>
#include <vector>

namespace demodulator {

/// The widest part.
constexpr double MOST_NARROW_Hz = 3700.0;

class NarrowSound
{
public:
    /// From `lowest_Hz` to `highest_Hz`, at most MOST_NARROW_Hz, from a step on that the bank still
    /// has. The bank outlives it.
    NarrowSound(const StepBank& bank, double lowest_Hz, double highest_Hz, std::int64_t begin_step);

    double rate_Hz() const { return m_rate_Hz; }
    /// What is 0 Hz of the sound in the band.
    double base_Hz() const { return m_base_Hz; }
    /// Time of its first sample in the band, in seconds.
    double begin_s() const { return m_begin_s; }

    /// Appends what the steps before `end_step` complete.
    void read(std::int64_t end_step, std::vector<float>& samples);

private:
    const StepBank& m_bank;
    std::size_t m_step; // samples of the sound
    double m_rate_Hz;
    long m_first; // filter
    std::size_t m_filters;
    double m_base_Hz;
    double m_begin_s;
    std::int64_t m_next; // step
    double m_scale;
    std::vector<std::complex<float>> m_waves; // by sample of a window, then filter
    std::vector<float> m_sum;                 // of the windows that overlap, not complete yet
};

} // namespace demodulator
