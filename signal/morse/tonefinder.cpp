// SPDX-License-Identifier: MIT
#include "signal/morse/tonefinder.h"

#include "signal/limits.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

// The power of noise in a bin is exponentially distributed: so much of its mean is its median.
constexpr double MEDIAN_OF_POWER = 0.693;

// The value below which one in so many lies.
double quantile(std::vector<float>& values, std::size_t oneIn)
{
    if (values.empty())
        return 0.0;
    const auto wanted = values.begin() + static_cast<std::ptrdiff_t>(values.size() / oneIn);
    std::nth_element(values.begin(), wanted, values.end());
    return static_cast<double>(*wanted);
}

double median(std::vector<float>& values)
{
    return quantile(values, 2);
}

// The frame, padded for a finer look.
std::size_t transformSize(std::size_t length)
{
    std::size_t size = 2;
    while (size < 2 * length)
        size *= 2;
    return size;
}

std::size_t samplesIn(double seconds, double rate_Hz)
{
    return static_cast<std::size_t>(std::lround(seconds * rate_Hz));
}

} // namespace

ToneFinder::ToneFinder(double rate_Hz, const FinderParameters& parameters)
    : m_parameters(parameters)
    , m_rate_Hz(rate_Hz)
    , m_hop(samplesIn(HOP_s, rate_Hz))
    , m_spectra(samplesIn(FRAME_s, rate_Hz), transformSize(samplesIn(FRAME_s, rate_Hz)),
                KEPT_FRAMES)
{
}

std::size_t ToneFinder::binOf(double frequency_Hz) const
{
    const double bin = frequency_Hz * static_cast<double>(m_spectra.size()) / m_rate_Hz;
    return static_cast<std::size_t>(
        std::clamp(bin + 0.5, 1.0, static_cast<double>(m_spectra.bins() - 3)));
}

std::vector<float> ToneFinder::meanPower(std::int64_t count, std::size_t first,
                                         std::size_t last) const
{
    std::vector<float> mean(last - first + 1, 0.0F);
    count = m_spectra.available(count);
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = m_spectra.frame(age) + first;
        for (std::size_t i = 0; i < mean.size(); ++i)
            mean[i] += powers[i];
    }
    for (float& power : mean)
        power /= static_cast<float>(std::max<std::int64_t>(1, count));
    return mean;
}

double ToneFinder::power(double tone_Hz, std::int64_t age, std::int64_t count) const
{
    const std::int64_t end = m_spectra.available(age + count);
    const std::size_t bin = binOf(tone_Hz);
    double sum = 0.0;
    for (std::int64_t i = age; i < end; ++i)
        sum += static_cast<double>(m_spectra.frame(i)[bin]);
    return end > age ? sum / static_cast<double>(end - age) : 0.0;
}

bool ToneFinder::hasComplement(double tone_Hz, std::int64_t count) const
{
    count = m_spectra.available(count);
    if (count < 4)
        return false;
    const std::size_t own = binOf(tone_Hz);
    const std::size_t first = std::min(
        own, binOf(std::max(m_parameters.lowest_Hz, tone_Hz - m_parameters.farthestShift_Hz)));
    const std::size_t last = binOf(tone_Hz + m_parameters.farthestShift_Hz);
    const std::vector<float> mean = meanPower(count, first, last);
    const double ownMean = static_cast<double>(mean[own - first]);
    std::vector<double> variance(mean.size(), 0.0);
    std::vector<double> common(mean.size(), 0.0);
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = m_spectra.frame(age);
        const double ownOff = static_cast<double>(powers[own]) - ownMean;
        for (std::size_t i = 0; i < mean.size(); ++i) {
            const double off = static_cast<double>(powers[first + i] - mean[i]);
            variance[i] += off * off;
            common[i] += off * ownOff;
        }
    }
    for (std::size_t i = 0; i < mean.size(); ++i) {
        const double product = std::sqrt(variance[i] * variance[own - first]);
        if (static_cast<double>(mean[i]) > m_parameters.leastComplement * ownMean &&
            common[i] < -m_parameters.opposite * product)
            return true;
    }
    return false;
}

bool ToneFinder::takesTurns(double tone_Hz, std::int64_t count) const
{
    count = m_spectra.available(count);
    if (count < 4)
        return false;
    const std::size_t first = binOf(m_parameters.lowest_Hz);
    const std::size_t last = binOf(HIGHEST_TONE_SHARE * m_rate_Hz);
    const std::size_t below = binOf(tone_Hz - m_parameters.noiseNearest_Hz);
    const std::size_t above = binOf(tone_Hz + m_parameters.noiseNearest_Hz);
    double ownSum = 0.0;
    double ownSquares = 0.0;
    double restSum = 0.0;
    double restSquares = 0.0;
    double products = 0.0;
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = m_spectra.frame(age);
        double own = 0.0;
        double rest = 0.0;
        for (std::size_t bin = first; bin <= last; ++bin)
            (bin > below && bin < above ? own : rest) += static_cast<double>(powers[bin]);
        ownSum += own;
        ownSquares += own * own;
        restSum += rest;
        restSquares += rest * rest;
        products += own * rest;
    }
    const auto frames = static_cast<double>(count);
    const double ownVariance = ownSquares - ownSum * ownSum / frames;
    const double restVariance = restSquares - restSum * restSum / frames;
    const double common = products - ownSum * restSum / frames;
    return restVariance > m_parameters.leastSwap * ownVariance &&
           restVariance < ownVariance / m_parameters.leastSwap &&
           common < -m_parameters.inTurn * std::sqrt(ownVariance * restVariance);
}

double ToneFinder::noiseNear(double tone_Hz, std::int64_t count) const
{
    const std::size_t first =
        binOf(std::max(m_parameters.lowest_Hz, tone_Hz - m_parameters.noiseFarthest_Hz));
    const std::size_t last = binOf(tone_Hz + m_parameters.noiseFarthest_Hz);
    const std::size_t below = binOf(tone_Hz - m_parameters.noiseNearest_Hz);
    const std::size_t above = binOf(tone_Hz + m_parameters.noiseNearest_Hz);
    const std::vector<float> mean = meanPower(count, first, last);
    std::vector<float> around;
    for (std::size_t bin = first; bin <= last; ++bin) {
        if (bin <= below || bin >= above)
            around.push_back(mean[bin - first]);
    }
    return median(around) / m_spectra.window().squares;
}

double ToneFinder::floorNear(double tone_Hz, std::int64_t age) const
{
    if (age < 0 || age >= m_spectra.available(KEPT_FRAMES))
        return 0.0;
    const float* powers = m_spectra.frame(age);
    std::vector<float> around;
    const auto add = [&](double from_Hz, double to_Hz) {
        const std::size_t last = binOf(to_Hz);
        for (std::size_t bin = binOf(std::max(m_parameters.lowest_Hz, from_Hz)); bin <= last; ++bin)
            around.push_back(powers[bin]);
    };
    add(tone_Hz - m_parameters.noiseFarthest_Hz, tone_Hz - m_parameters.noiseNearest_Hz);
    add(tone_Hz + m_parameters.noiseNearest_Hz, tone_Hz + m_parameters.noiseFarthest_Hz);
    return median(around) / (MEDIAN_OF_POWER * m_spectra.window().squares);
}

double ToneFinder::noiseInGaps(double tone_Hz, std::int64_t count) const
{
    const std::size_t bin = binOf(tone_Hz);
    std::vector<float> powers;
    for (std::int64_t age = 0; age < m_spectra.available(count); ++age)
        powers.push_back(m_spectra.frame(age)[bin]);
    return quantile(powers, 10) / m_spectra.window().squares;
}

// The stronger of both sides: at the edge of a receiver's filter there is noise on one side only,
// and noise would look like a signal against the other.
double ToneFinder::noiseBeside(double tone_Hz, std::int64_t count) const
{
    const auto side = [&](double from_Hz, double to_Hz) {
        if (from_Hz >= to_Hz)
            return 0.0;
        std::vector<float> powers = meanPower(count, binOf(from_Hz), binOf(to_Hz));
        return median(powers) / m_spectra.window().squares;
    };
    return std::max(side(std::max(m_parameters.lowest_Hz, tone_Hz - m_parameters.beside_Hz),
                         tone_Hz - m_parameters.noiseNearest_Hz),
                    side(tone_Hz + m_parameters.noiseNearest_Hz, tone_Hz + m_parameters.beside_Hz));
}

std::optional<ToneCandidate> ToneFinder::find(std::int64_t count, const Band& band,
                                              const std::vector<Band>& leftOut) const
{
    count = m_spectra.available(count);
    if (count < 4)
        return {};
    const std::size_t first = binOf(band.lowest_Hz);
    const std::size_t last = binOf(std::min(band.highest_Hz, HIGHEST_TONE_SHARE * m_rate_Hz));
    if (last <= first)
        return {};
    const std::vector<float> mean = meanPower(count, first, last);
    std::vector<float> variance(mean.size(), 0.0F);
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = m_spectra.frame(age) + first;
        for (std::size_t i = 0; i < mean.size(); ++i) {
            const float difference = powers[i] - mean[i];
            variance[i] += difference * difference;
        }
    }
    const double binWidth_Hz = m_rate_Hz / static_cast<double>(m_spectra.size());
    std::vector<bool> isLeftOut(mean.size(), false);
    for (const Band& out : leftOut) {
        for (std::size_t bin = binOf(out.lowest_Hz); bin <= binOf(out.highest_Hz); ++bin) {
            if (bin >= first && bin <= last)
                isLeftOut[bin - first] = true;
        }
    }
    std::size_t best = mean.size();
    for (std::size_t i = 1; i + 1 < mean.size(); ++i) {
        variance[i] /= static_cast<float>(count);
        if (isLeftOut[i])
            continue;
        if (best == mean.size() || variance[i] > variance[best])
            best = i;
    }
    if (best == mean.size() || best + 1 >= mean.size())
        return {};

    // The peak of the mean power near the peak of the swing, between the bins.
    while (best > 1 && mean[best - 1] > mean[best])
        --best;
    while (best + 2 < mean.size() && mean[best + 1] > mean[best])
        ++best;
    if (isLeftOut[best])
        return {}; // its edge
    const double left = mean[best - 1];
    const double right = mean[best + 1];
    const double centre = mean[best];
    const double curvature = left - 2.0 * centre + right;
    const double shift =
        curvature < 0.0 ? std::clamp(0.5 * (left - right) / curvature, -0.5, 0.5) : 0.0;

    ToneCandidate candidate;
    candidate.tone_Hz = (static_cast<double>(first + best) + shift) * binWidth_Hz;
    candidate.noise = noiseBeside(candidate.tone_Hz, count);
    const double noisePower = candidate.noise * m_spectra.window().squares;
    const double excess = centre - noisePower;
    const double spread = variance[best];
    if (!(centre > 0.0) || centre < m_parameters.leastExcess * noisePower)
        return {};
    candidate.swing = spread / (centre * std::max(noisePower, 1e-4 * centre));
    if (candidate.swing < m_parameters.leastSwing)
        return {};
    // With the key down a share q of the time: excess = q P, spread = q (1 - q) P^2 + noise terms.
    const double keyed = spread - noisePower * noisePower - 2.0 * excess * noisePower;
    const double power = excess + std::max(0.0, keyed / excess);
    const double windowSum = m_spectra.window().sum;
    candidate.level = power / (windowSum * windowSum);
    return candidate;
}

} // namespace demodulator
