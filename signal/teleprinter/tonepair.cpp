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
    for (const std::size_t tone : {SPACE, MARK}) {
        const double turns = tones_Hz[tone] / rate_Hz;
        const double before = turns * static_cast<double>(begin);
        const std::complex<double> turn = std::polar(1.0, -2.0 * PI * turns);
        std::complex<double> carrier = std::polar(1.0, -2.0 * PI * (before - std::floor(before)));
        Sums& sums = m_sums[tone];
        sums.resize(m_last + 1);
        std::complex<double> sum = 0.0;
        for (std::size_t n = 0; n < m_last; ++n) {
            sum += static_cast<double>(samples[n]) * carrier;
            sums[n + 1] = sum;
            carrier = {carrier.real() * turn.real() - carrier.imag() * turn.imag(),
                       carrier.real() * turn.imag() + carrier.imag() * turn.real()};
        }
    }
}

} // namespace teleprinter
