// SPDX-License-Identifier: MIT
#include "signal/teleprinter/spectrum.h"

#include "signal/limits.h"
#include "signal/numbers.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <kiss_fftr.h>

namespace teleprinter {

using demodulator::PI;

namespace {

// Bins of 8 Hz: narrower than a tone at any speed, and tones 70 Hz apart are two.
constexpr double SPECTRUM_s = 0.128;
constexpr std::int64_t KEPT_FRAMES = 128; // 8 s: longer than the longest search
// The strongest of each kind; more only take time, pair by pair.
constexpr std::size_t MOST_PEAKS = 7;
constexpr std::size_t MOST_PAIRS = 8;
constexpr std::size_t MOST_HUMPS = 2;
// Shifts that are no wider than what fast ASCII fills: one hump does not show them.
constexpr double USUAL_NARROW_SHIFTS_Hz[] = {170.0, 200.0};

double median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::size_t frameLength(double rate_Hz)
{
    const int wanted = static_cast<int>(std::lround(SPECTRUM_s * rate_Hz));
    return static_cast<std::size_t>(kiss_fftr_next_fast_size_real(wanted));
}

} // namespace

Spectrum::Spectrum(double rate_Hz, const SpectrumParameters& parameters)
    : m_parameters(parameters)
    , m_rate_Hz(rate_Hz)
    , m_spectra(frameLength(rate_Hz), frameLength(rate_Hz), KEPT_FRAMES)
{
}

std::vector<double> Spectrum::meanPower(double seconds) const
{
    std::vector<double> mean(m_spectra.bins(), 0.0);
    const auto wanted = std::llround(seconds * m_rate_Hz / static_cast<double>(hop()));
    const std::int64_t count = m_spectra.available(wanted);
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = m_spectra.frame(age);
        for (std::size_t bin = 0; bin < m_spectra.bins(); ++bin)
            mean[bin] += static_cast<double>(powers[bin]);
    }
    // As variance of a sample of white noise.
    const double scale =
        1.0 / (m_spectra.window().squares * static_cast<double>(std::max<std::int64_t>(1, count)));
    for (double& power : mean)
        power *= scale;
    return mean;
}

std::size_t Spectrum::reach(double baud) const
{
    const double width_Hz = std::max(m_parameters.leastReach_Hz, m_parameters.toneReach * baud);
    return static_cast<std::size_t>(std::max(1L, std::lround(width_Hz / binWidth_Hz())));
}

// Humps so wide to each side, the strongest first.
std::vector<Spectrum::Peak> Spectrum::peaks(const std::vector<double>& power,
                                            std::size_t reach) const
{
    const double width_Hz = binWidth_Hz();
    const auto binOf = [&](double tone_Hz) {
        return static_cast<std::size_t>(
            std::clamp(tone_Hz / width_Hz, 0.0, static_cast<double>(m_spectra.bins() - 1)));
    };
    const std::size_t first = std::max(binOf(LOWEST_TONE_Hz), reach);
    const std::size_t last =
        std::min(binOf(std::min(HIGHEST_TONE_Hz, demodulator::HIGHEST_TONE_SHARE * m_rate_Hz)),
                 m_spectra.bins() - 1 - reach);
    std::vector<double> weights; // of the bins around one
    double allWeights = 0.0;
    for (std::size_t k = 0; k <= 2 * reach; ++k) {
        const double offset =
            (static_cast<double>(k) - static_cast<double>(reach)) / static_cast<double>(reach + 1);
        weights.push_back(0.5 + 0.5 * std::cos(PI * offset));
        allWeights += weights.back();
    }
    std::vector<double> smooth(m_spectra.bins(), 0.0);
    for (std::size_t bin = first; bin <= last; ++bin) {
        double sum = 0.0;
        for (std::size_t k = 0; k <= 2 * reach; ++k)
            sum += weights[k] * power[bin - reach + k];
        smooth[bin] = sum / allWeights;
    }

    std::vector<Peak> peaks;
    for (std::size_t bin = first; bin <= last; ++bin) {
        const std::size_t from = std::max(first, bin - std::min(bin, reach));
        const std::size_t to = std::min(last, bin + reach);
        if (*std::max_element(smooth.begin() + static_cast<std::ptrdiff_t>(from),
                              smooth.begin() + static_cast<std::ptrdiff_t>(to) + 1) > smooth[bin])
            continue;
        const std::size_t around = binOf(m_parameters.floorReach_Hz);
        const std::size_t begin = std::max(first, bin - std::min(bin, around));
        const std::size_t end = std::min(last, bin + around);
        const double floor = median({smooth.begin() + static_cast<std::ptrdiff_t>(begin),
                                     smooth.begin() + static_cast<std::ptrdiff_t>(end) + 1});
        // The centre of the hump, not its highest bin.
        double excesses = 1e-30;
        double moment = 0.0;
        for (std::size_t k = from; k <= to; ++k) {
            const double excess = std::max(0.0, smooth[k] - m_parameters.humpFrom * smooth[bin]);
            excesses += excess;
            moment += excess * static_cast<double>(k);
        }
        const double excess = smooth[bin] / std::max(floor, 1e-14);
        if (excess > m_parameters.leastExcess)
            peaks.push_back({moment / excesses * width_Hz, excess});
    }
    std::sort(peaks.begin(), peaks.end(),
              [](const Peak& a, const Peak& b) { return a.excess > b.excess; });
    peaks.resize(std::min(peaks.size(), MOST_PEAKS));
    return peaks;
}

std::vector<TonesFound> Spectrum::pairs(const Known& known, double baud, double seconds) const
{
    const std::vector<double> power = meanPower(seconds);
    struct Ranked
    {
        TonesFound found;
        double rank;
    };
    std::vector<Ranked> ranked;
    const auto isAtCentre = [&](double centre_Hz) {
        return !known.centre_Hz ||
               std::fabs(centre_Hz - *known.centre_Hz) <= m_parameters.knownTolerance_Hz;
    };

    const std::vector<Peak> tones = peaks(power, reach(baud));
    const double tolerance_Hz =
        m_parameters.knownShiftTolerance * (known.shift_Hz.value_or(0.0) + baud);
    for (const Peak& lower : tones) {
        for (const Peak& upper : tones) {
            const double shift_Hz = upper.tone_Hz - lower.tone_Hz;
            if (shift_Hz < LEAST_SHIFT_Hz || shift_Hz > MOST_SHIFT_Hz ||
                shift_Hz < m_parameters.leastIndex * baud)
                continue;
            if (known.shift_Hz && std::fabs(shift_Hz - *known.shift_Hz) > tolerance_Hz)
                continue;
            if (!isAtCentre(0.5 * (upper.tone_Hz + lower.tone_Hz)))
                continue;
            const double ratio = (upper.excess - 1.0) / (lower.excess - 1.0);
            if (ratio > m_parameters.mostUnequal || ratio < 1.0 / m_parameters.mostUnequal)
                continue;
            ranked.push_back(
                {{{lower.tone_Hz, upper.tone_Hz}, false}, std::log(upper.excess * lower.excess)});
        }
    }

    // A shift that is little more than the speed makes one hump of both tones.
    std::vector<double> shifts(std::begin(USUAL_NARROW_SHIFTS_Hz),
                               std::end(USUAL_NARROW_SHIFTS_Hz));
    if (known.shift_Hz)
        shifts = {*known.shift_Hz};
    for (const double shift_Hz : shifts) {
        if (shift_Hz < m_parameters.leastIndex * baud || shift_Hz > m_parameters.mostMerged * baud)
            continue;
        const auto half =
            static_cast<std::size_t>(std::lround(0.5 * (shift_Hz + baud) / binWidth_Hz()));
        std::vector<Peak> humps = peaks(power, half);
        humps.resize(std::min(humps.size(), MOST_HUMPS));
        for (const Peak& hump : humps) {
            if (isAtCentre(hump.tone_Hz))
                ranked.push_back(
                    {{{hump.tone_Hz - 0.5 * shift_Hz, hump.tone_Hz + 0.5 * shift_Hz}, true},
                     2.0 * std::log(hump.excess)});
        }
    }
    std::sort(ranked.begin(), ranked.end(),
              [](const Ranked& a, const Ranked& b) { return a.rank > b.rank; });
    ranked.resize(std::min(ranked.size(), MOST_PAIRS));
    std::vector<TonesFound> pairs;
    pairs.reserve(ranked.size());
    for (const Ranked& pair : ranked)
        pairs.push_back(pair.found);
    return pairs;
}

double Spectrum::noise(double lower_Hz, double upper_Hz, double baud, double seconds) const
{
    const std::vector<double> power = meanPower(seconds);
    const double width_Hz = binWidth_Hz();
    std::vector<double> beside;
    for (double reach_Hz = m_parameters.noiseReach_Hz; beside.size() < 16 && reach_Hz < m_rate_Hz;
         reach_Hz *= 2.0) {
        beside.clear();
        for (std::size_t bin = 1; bin + 1 < m_spectra.bins(); ++bin) {
            const double at_Hz = static_cast<double>(bin) * width_Hz;
            const double nearest_Hz =
                std::min(std::fabs(at_Hz - lower_Hz), std::fabs(at_Hz - upper_Hz));
            if (at_Hz > lower_Hz - reach_Hz && at_Hz < upper_Hz + reach_Hz &&
                nearest_Hz > m_parameters.noiseDistance * baud)
                beside.push_back(power[bin]);
        }
    }
    return median(beside);
}

} // namespace teleprinter
