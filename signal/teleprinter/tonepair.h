// SPDX-License-Identifier: MIT
// Stage: the pair of matched filters. Both tones are mixed to 0 Hz and summed up, so that the sum
// over any span is the filter matched to an element of that length.
#pragma once

#include "signal/samples/samples.h"

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

namespace teleprinter {

/// Index of a tone: what it stands for.
constexpr std::size_t SPACE = 0;
constexpr std::size_t MARK = 1;

/// One figure for each tone.
template <typename T>
using ByTone = std::array<T, 2>;

class TonePair
{
public:
    /// Mixes samples [begin, end) of what is still in the history. Phases count from sample 0 of
    /// the input, so that pairs of equal tones over other spans fit together.
    TonePair(const demodulator::SampleHistory& history, double rate_Hz, ByTone<double> tones_Hz,
             std::int64_t begin, std::int64_t end);

    double begin() const { return static_cast<double>(m_begin); }
    double end() const { return static_cast<double>(m_begin) + static_cast<double>(m_last); }

    /// Sum of a mixed tone over a span of the input, in samples; between samples in proportion.
    /// What lies outside counts as silence.
    std::complex<double> sum(std::size_t tone, double from, double to) const
    {
        return upTo(tone, to) - upTo(tone, from);
    }
    /// The same from begin() to a place.
    std::complex<double> upTo(std::size_t tone, double at) const { return upTo(m_sums[tone], at); }

private:
    using Sums = std::vector<std::complex<double>>;

    std::complex<double> upTo(const Sums& sums, double at) const
    {
        const double offset = at - static_cast<double>(m_begin);
        if (offset <= 0.0)
            return 0.0;
        const auto whole = static_cast<std::size_t>(offset);
        if (whole >= m_last)
            return sums[m_last];
        return sums[whole] +
               (offset - static_cast<double>(whole)) * (sums[whole + 1] - sums[whole]);
    }

    std::int64_t m_begin;
    std::size_t m_last; // samples mixed
    ByTone<Sums> m_sums;
};

} // namespace teleprinter
