// SPDX-License-Identifier: MIT
#include "signal/morse/tonefinder.h"

#include "signal/morse/limits.h"

#include <algorithm>
#include <cmath>
#include <kiss_fftr.h>

namespace demodulator {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr double NOISE_NEAREST_Hz = 40.0; // the tone itself ends here
constexpr double NOISE_WIDTH_Hz = 200.0;  // narrow receiver filters end here
constexpr double BESIDE_Hz = 140.0;       // still within narrower ones
// Power of noise alone varies as much as its mean (1); a carrier in noise up to twice.
constexpr double LEAST_SWING = 2.6;
// The power of noise in a bin is exponentially distributed: so much of its mean is its median.
constexpr double MEDIAN_OF_POWER = 0.693;
// The other tone of frequency shift keying: how far off it is at most, how much of our power it has
// at least, and how opposite (as a correlation) the two are.
constexpr double FARTHEST_SHIFT_Hz = 1000.0;
constexpr double LEAST_COMPLEMENT = 0.2;
constexpr double OPPOSITE = 0.5;
constexpr double LEAST_EXCESS = 1.6; // mean power over that of the surroundings

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

} // namespace

ToneFinder::ToneFinder(double rate_Hz)
    : m_rate_Hz(rate_Hz)
    , m_hop(static_cast<std::size_t>(std::lround(HOP_s * rate_Hz)))
    , m_size(2)
    , m_transform(nullptr, kiss_fftr_free)
{
    const auto length = static_cast<std::size_t>(std::lround(FRAME_s * rate_Hz));
    for (std::size_t n = 0; n < length; ++n) {
        const double value = 0.5 - 0.5 * std::cos(2.0 * PI * (static_cast<double>(n) + 0.5) /
                                                  static_cast<double>(length));
        m_window.push_back(static_cast<float>(value));
        m_windowSum += value;
        m_windowSquares += value * value;
    }
    while (m_size < 2 * length)
        m_size *= 2;
    m_transform.reset(kiss_fftr_alloc(static_cast<int>(m_size), 0, nullptr, nullptr));
    m_input.assign(m_size, 0.0F);
    m_output.resize(m_size / 2 + 1);
    m_bins = m_size / 2;
    m_powers.assign(m_bins * static_cast<std::size_t>(KEPT_FRAMES), 0.0F);
}

void ToneFinder::push(const float* samples)
{
    for (std::size_t n = 0; n < m_window.size(); ++n)
        m_input[n] = samples[n] * m_window[n];
    kiss_fftr(m_transform.get(), m_input.data(), reinterpret_cast<kiss_fft_cpx*>(m_output.data()));
    float* powers = &m_powers[static_cast<std::size_t>(m_frames % KEPT_FRAMES) * m_bins];
    for (std::size_t bin = 0; bin < m_bins; ++bin)
        powers[bin] = std::norm(m_output[bin]);
    ++m_frames;
}

const float* ToneFinder::frame(std::int64_t age) const
{
    return &m_powers[static_cast<std::size_t>((m_frames - 1 - age) % KEPT_FRAMES) * m_bins];
}

std::size_t ToneFinder::binOf(double frequency_Hz) const
{
    const double bin = frequency_Hz * static_cast<double>(m_size) / m_rate_Hz;
    return static_cast<std::size_t>(std::clamp(bin + 0.5, 1.0, static_cast<double>(m_bins - 2)));
}

std::vector<float> ToneFinder::meanPower(std::int64_t count, std::size_t first,
                                         std::size_t last) const
{
    std::vector<float> mean(last - first + 1, 0.0F);
    count = std::min({count, m_frames, KEPT_FRAMES});
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = frame(age) + first;
        for (std::size_t i = 0; i < mean.size(); ++i)
            mean[i] += powers[i];
    }
    for (float& power : mean)
        power /= static_cast<float>(std::max<std::int64_t>(1, count));
    return mean;
}

double ToneFinder::power(double tone_Hz, std::int64_t age, std::int64_t count) const
{
    const std::int64_t end = std::min({age + count, m_frames, KEPT_FRAMES});
    const std::size_t bin = binOf(tone_Hz);
    double sum = 0.0;
    for (std::int64_t i = age; i < end; ++i)
        sum += static_cast<double>(frame(i)[bin]);
    return end > age ? sum / static_cast<double>(end - age) : 0.0;
}

bool ToneFinder::hasComplement(double tone_Hz, std::int64_t count) const
{
    count = std::min({count, m_frames, KEPT_FRAMES});
    if (count < 4)
        return false;
    const std::size_t own = binOf(tone_Hz);
    const std::size_t first = binOf(std::max(60.0, tone_Hz - FARTHEST_SHIFT_Hz));
    const std::size_t last = binOf(tone_Hz + FARTHEST_SHIFT_Hz);
    const std::vector<float> mean = meanPower(count, first, last);
    const double ownMean = static_cast<double>(mean[own - first]);
    std::vector<double> variance(mean.size(), 0.0);
    std::vector<double> common(mean.size(), 0.0);
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = frame(age);
        const double ownOff = static_cast<double>(powers[own]) - ownMean;
        for (std::size_t i = 0; i < mean.size(); ++i) {
            const double off = static_cast<double>(powers[first + i] - mean[i]);
            variance[i] += off * off;
            common[i] += off * ownOff;
        }
    }
    for (std::size_t i = 0; i < mean.size(); ++i) {
        const double product = std::sqrt(variance[i] * variance[own - first]);
        if (static_cast<double>(mean[i]) > LEAST_COMPLEMENT * ownMean &&
            common[i] < -OPPOSITE * product)
            return true;
    }
    return false;
}

double ToneFinder::noiseNear(double tone_Hz, std::int64_t count) const
{
    const std::size_t first = binOf(std::max(60.0, tone_Hz - NOISE_WIDTH_Hz));
    const std::size_t last = binOf(tone_Hz + NOISE_WIDTH_Hz);
    const std::size_t below = binOf(tone_Hz - NOISE_NEAREST_Hz);
    const std::size_t above = binOf(tone_Hz + NOISE_NEAREST_Hz);
    const std::vector<float> mean = meanPower(count, first, last);
    std::vector<float> around;
    for (std::size_t bin = first; bin <= last; ++bin) {
        if (bin <= below || bin >= above)
            around.push_back(mean[bin - first]);
    }
    return median(around) / m_windowSquares;
}

double ToneFinder::floorNear(double tone_Hz, std::int64_t age) const
{
    if (age < 0 || age >= std::min(m_frames, KEPT_FRAMES))
        return 0.0;
    const float* powers = frame(age);
    std::vector<float> around;
    const auto add = [&](double from_Hz, double to_Hz) {
        const std::size_t last = binOf(to_Hz);
        for (std::size_t bin = binOf(std::max(60.0, from_Hz)); bin <= last; ++bin)
            around.push_back(powers[bin]);
    };
    add(tone_Hz - NOISE_WIDTH_Hz, tone_Hz - NOISE_NEAREST_Hz);
    add(tone_Hz + NOISE_NEAREST_Hz, tone_Hz + NOISE_WIDTH_Hz);
    return median(around) / (MEDIAN_OF_POWER * m_windowSquares);
}

double ToneFinder::noiseInGaps(double tone_Hz, std::int64_t count) const
{
    const std::size_t bin = binOf(tone_Hz);
    std::vector<float> powers;
    for (std::int64_t age = 0; age < std::min({count, m_frames, KEPT_FRAMES}); ++age)
        powers.push_back(frame(age)[bin]);
    return quantile(powers, 10) / m_windowSquares;
}

// The stronger of both sides: at the edge of a receiver's filter there is noise on one side only,
// and noise would look like a signal against the other.
double ToneFinder::noiseBeside(double tone_Hz, std::int64_t count) const
{
    const auto side = [&](double from_Hz, double to_Hz) {
        std::vector<float> powers = meanPower(count, binOf(from_Hz), binOf(to_Hz));
        return median(powers) / m_windowSquares;
    };
    return std::max(side(std::max(60.0, tone_Hz - BESIDE_Hz), tone_Hz - NOISE_NEAREST_Hz),
                    side(tone_Hz + NOISE_NEAREST_Hz, tone_Hz + BESIDE_Hz));
}

std::optional<ToneCandidate> ToneFinder::find(std::int64_t count, const Band& band,
                                              const std::vector<Band>& leftOut) const
{
    count = std::min({count, m_frames, KEPT_FRAMES});
    if (count < 4)
        return {};
    const std::size_t first = binOf(band.lowest_Hz);
    const std::size_t last = binOf(std::min(band.highest_Hz, HIGHEST_TONE_SHARE * m_rate_Hz));
    if (last <= first)
        return {};
    const std::vector<float> mean = meanPower(count, first, last);
    std::vector<float> variance(mean.size(), 0.0F);
    for (std::int64_t age = 0; age < count; ++age) {
        const float* powers = frame(age) + first;
        for (std::size_t i = 0; i < mean.size(); ++i) {
            const float difference = powers[i] - mean[i];
            variance[i] += difference * difference;
        }
    }
    const double binWidth_Hz = m_rate_Hz / static_cast<double>(m_size);
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
    const double noisePower = candidate.noise * m_windowSquares;
    const double excess = centre - noisePower;
    const double spread = variance[best];
    if (!(centre > 0.0) || centre < LEAST_EXCESS * noisePower)
        return {};
    candidate.swing = spread / (centre * std::max(noisePower, 1e-4 * centre));
    if (candidate.swing < LEAST_SWING)
        return {};
    // With the key down a share q of the time: excess = q P, spread = q (1 - q) P^2 + noise terms.
    const double keyed = spread - noisePower * noisePower - 2.0 * excess * noisePower;
    const double power = excess + std::max(0.0, keyed / excess);
    candidate.level = power / (m_windowSum * m_windowSum);
    return candidate;
}

} // namespace demodulator
