// SPDX-License-Identifier: MIT
#include "signal/teleprinter/tonepair.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>

namespace teleprinter {

using demodulator::PI;

TonePair::TonePair(const demodulator::SampleHistory& history, double rate_Hz,
                   ByTone<double> tones_Hz, std::int64_t begin, std::int64_t end)
    : m_begin(begin)
    , m_last(static_cast<std::size_t>(std::max<std::int64_t>(0, end - begin)))
{
    std::vector<float> samples(m_last);
    history.copy(begin, m_last, samples.data());
    ByTone<std::complex<double>> turns;
    ByTone<std::complex<double>> carriers;
    for (const std::size_t tone : {SPACE, MARK}) {
        const double share = tones_Hz[tone] / rate_Hz;
        const double before = share * static_cast<double>(begin);
        turns[tone] = std::polar(1.0, -2.0 * PI * share);
        carriers[tone] = std::polar(1.0, -2.0 * PI * (before - std::floor(before)));
        m_sums[tone].reserve(m_last + 1);
        m_sums[tone].emplace_back(0.0);
    }
    // Both tones in one loop: each waits for the one before, so that they pass the time together.
    ByTone<std::complex<double>> sums = {0.0, 0.0};
    for (std::size_t n = 0; n < m_last; ++n) {
        const auto sample = static_cast<double>(samples[n]);
        for (const std::size_t tone : {SPACE, MARK}) {
            const std::complex<double> carrier = carriers[tone];
            sums[tone] += sample * carrier;
            m_sums[tone].push_back(sums[tone]);
            carriers[tone] = {
                carrier.real() * turns[tone].real() - carrier.imag() * turns[tone].imag(),
                carrier.real() * turns[tone].imag() + carrier.imag() * turns[tone].real()};
        }
    }
}

} // namespace teleprinter
