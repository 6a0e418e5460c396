// SPDX-License-Identifier: MIT
#include "signal/teleprinter/tracking.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>

namespace teleprinter {

using demodulator::PI;

namespace {

// Where the parabola through three equally spaced heights has its top, in steps from the middle.
double topOf(const double (&heights)[3])
{
    const double bend = heights[0] - 2.0 * heights[1] + heights[2];
    if (bend >= 0.0)
        return 0.0;
    return std::clamp(0.5 * (heights[0] - heights[2]) / bend, -1.0, 1.0);
}

} // namespace

void Tracking::add(const TonePair& tones, const std::vector<Decided>& characters, double bit)
{
    for (const Decided& character : characters) {
        std::complex<double> before = 0.0;
        int toneBefore = -1;
        for (int element = 0; element < character.count; ++element) {
            const std::size_t tone = (character.elements >> element & 1U) != 0 ? MARK : SPACE;
            const double begin = character.begin + element * bit;
            const std::complex<double> first = tones.sum(tone, begin, begin + 0.5 * bit);
            const std::complex<double> second = tones.sum(tone, begin + 0.5 * bit, begin + bit);
            m_halves[tone] += second * std::conj(first);
            const std::complex<double> whole = first + second;
            if (toneBefore == static_cast<int>(tone)) {
                const std::complex<double> turn = whole * std::conj(before);
                m_turns[tone] += turn;
                m_magnitudes[tone] += std::abs(turn);
                ++m_counts[tone];
            }
            before = whole;
            toneBefore = static_cast<int>(tone);

            ++m_elements;
            m_energy += std::norm(whole);
            m_lengths[1] += std::abs(whole);
            m_begins[1] += std::abs(whole);
            for (const int side : {-1, 1}) {
                const double length = bit * (1.0 + side * m_parameters.lengthStep);
                // Longer elements about the middle of the character, so that its begin stays apart.
                const double stretched = begin + (element - 0.5 * character.count) * (length - bit);
                m_lengths[1 + side] += std::abs(tones.sum(tone, stretched, stretched + bit));
                const double moved = begin + side * m_parameters.beginStep * bit;
                m_begins[1 + side] += std::abs(tones.sum(tone, moved, moved + bit));
            }
        }
    }
}

double Tracking::toneError_Hz(std::size_t tone, double rate_Hz, double bit) const
{
    if (std::abs(m_halves[tone]) <= 0.0)
        return 0.0;
    return std::arg(m_halves[tone]) / (PI * bit) * rate_Hz;
}

double Tracking::fineToneError_Hz(std::size_t tone, double rate_Hz, double bit) const
{
    if (m_magnitudes[tone] <= 0.0)
        return 0.0;
    return std::arg(m_turns[tone]) / (2.0 * PI * bit) * rate_Hz;
}

double Tracking::fineVariance_Hz2(std::size_t tone, double rate_Hz, double bit) const
{
    const double perRadian_Hz = rate_Hz / (2.0 * PI * bit);
    if (m_magnitudes[tone] <= 0.0)
        return perRadian_Hz * perRadian_Hz;
    const double scatter = 2.0 * (1.0 - std::abs(m_turns[tone]) / m_magnitudes[tone]);
    return (scatter + m_parameters.leastScatter) / m_counts[tone] * perRadian_Hz * perRadian_Hz;
}

double Tracking::lengthError() const
{
    return topOf(m_lengths) * m_parameters.lengthStep;
}

double Tracking::beginError(double bit) const
{
    return topOf(m_begins) * m_parameters.beginStep * bit;
}

void SignalStrength::add(const Tracking& tracking, double noise, double rate_Hz, double bit)
{
    if (noise <= 0.0)
        return;
    // A tone of power P gives P bit^2 / 2, the noise bit times its variance.
    const double energy = tracking.energy() - tracking.elements() * noise * bit;
    const double power = std::max(0.0, 2.0 * energy / (bit * bit));
    constexpr double WIDTH_Hz = 500.0; // in which the noise of a ratio is counted
    m_ratios += power / (noise * WIDTH_Hz / (0.5 * rate_Hz));
    m_elements += tracking.elements();
}

std::optional<double> SignalStrength::snr_dB() const
{
    constexpr double LEAST = 1e-3; // what fades away has a logarithm, too
    constexpr double MOST = 1e9;   // without any noise
    if (m_elements <= 0.0)
        return std::nullopt;
    return 10.0 * std::log10(std::clamp(m_ratios / m_elements, LEAST, MOST));
}

void followTones(const Tracking& tracking, Line& line, double rate_Hz, double bit)
{
    const TrackingParameters& own = tracking.parameters();
    const double space_Hz = tracking.fineToneError_Hz(SPACE, rate_Hz, bit);
    const double mark_Hz = tracking.fineToneError_Hz(MARK, rate_Hz, bit);
    const double space_Hz2 = tracking.fineVariance_Hz2(SPACE, rate_Hz, bit);
    const double mark_Hz2 = tracking.fineVariance_Hz2(MARK, rate_Hz, bit);
    const double both_Hz2 = space_Hz2 * mark_Hz2 / (space_Hz2 + mark_Hz2);
    const double centreError_Hz = both_Hz2 * (space_Hz / space_Hz2 + mark_Hz / mark_Hz2);
    const double centre_Hz =
        centreError_Hz * own.centreDrift_Hz2 / (own.centreDrift_Hz2 + both_Hz2);
    const double shift_Hz =
        (mark_Hz - space_Hz) * own.shiftDrift_Hz2 / (own.shiftDrift_Hz2 + space_Hz2 + mark_Hz2);
    line.mark_Hz += centre_Hz + 0.5 * shift_Hz;
    line.space_Hz += centre_Hz - 0.5 * shift_Hz;
}

} // namespace teleprinter
