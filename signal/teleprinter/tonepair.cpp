// SPDX-License-Identifier: MIT
#include "signal/teleprinter/tonepair.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>

namespace teleprinter {

using demodulator::PI;

namespace {

// Mixes one tone to 0 Hz and sums it up. Plain numbers, which stay in registers through the loop.
class Mixer
{
public:
    Mixer(double share, std::int64_t begin)
        : m_turnRe(std::cos(2.0 * PI * share))
        , m_turnIm(-std::sin(2.0 * PI * share))
    {
        const double before = share * static_cast<double>(begin);
        const double angle = -2.0 * PI * (before - std::floor(before));
        m_re = std::cos(angle);
        m_im = std::sin(angle);
    }

    std::complex<double> add(double sample)
    {
        m_sumRe += sample * m_re;
        m_sumIm += sample * m_im;
        const double re = m_re * m_turnRe - m_im * m_turnIm;
        m_im = m_re * m_turnIm + m_im * m_turnRe;
        m_re = re;
        return {m_sumRe, m_sumIm};
    }

private:
    double m_turnRe;
    double m_turnIm;
    double m_re;
    double m_im;
    double m_sumRe = 0.0;
    double m_sumIm = 0.0;
};

} // namespace

TonePair::TonePair(const demodulator::SampleHistory& history, double rate_Hz,
                   ByTone<double> tones_Hz, std::int64_t begin, std::int64_t end)
    : m_begin(begin)
    , m_last(static_cast<std::size_t>(std::max<std::int64_t>(0, end - begin)))
{
    std::vector<float> samples(m_last);
    history.copy(begin, m_last, samples.data());
    for (Sums& sums : m_sums)
        sums.resize(m_last + 1);
    // Both tones in one loop: each waits for the one before, so that they pass the time together.
    Mixer space(tones_Hz[SPACE] / rate_Hz, begin);
    Mixer mark(tones_Hz[MARK] / rate_Hz, begin);
    std::complex<double>* const spaces = m_sums[SPACE].data();
    std::complex<double>* const marks = m_sums[MARK].data();
    for (std::size_t n = 0; n < m_last; ++n) {
        const auto sample = static_cast<double>(samples[n]);
        spaces[n + 1] = space.add(sample);
        marks[n + 1] = mark.add(sample);
    }
}

} // namespace teleprinter
