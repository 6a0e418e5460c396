// SPDX-License-Identifier: MIT
#include "signal/band/survey.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <kiss_fft.h>

namespace demodulator {

namespace {

// 250 Hz: noise is taken to be even over a piece, and a signal fills less than half of it.
constexpr std::size_t PIECE_BINS = 16;
// Spectra overlap by half, so that so many of them are independent.
constexpr double INDEPENDENT = 0.65;

// Of the powers of a piece in one frame, the value that as many are below: a signal fills the rest.
constexpr std::size_t LOW_IN_PIECE = 4;

constexpr std::size_t AROUND_PIECES = 2; // that count, on each side

// Where that value lies in noise, whose powers are distributed exponentially, as a share of the
// mean.
double shareOfMean(std::int64_t rank, std::int64_t count)
{
    double share = 0.0;
    for (std::int64_t i = count - rank; i <= count; ++i)
        share += 1.0 / static_cast<double>(i);
    return share;
}

// How a keyed tone looks beside its frequency, as power: the window's own skirt, then the clicks of
// hard edges.
struct Skirt
{
    double offset_Hz;
    double power_dB;
};
constexpr Skirt SKIRT[] = {{0.0, 0.0},     {16.0, -4.0},   {31.0, -14.0},  {47.0, -17.0},
                           {63.0, -18.0},  {100.0, -20.0}, {160.0, -24.0}, {250.0, -28.0},
                           {400.0, -32.0}, {800.0, -38.0}, {3000.0, -49.0}};

// What is left of noise so far outside the edge of a receiver's filter, at least: the filter's own
// slope, and that of the one through which a step is seen.
double ofEdge(double distance_Hz)
{
    constexpr double LEVEL_Hz = 60.0; // beside the edge, where a step's filter still reaches in
    constexpr double SLOPE_dB_per_Hz = 0.1;
    return std::pow(10.0, -0.1 * SLOPE_dB_per_Hz * std::max(0.0, distance_Hz - LEVEL_Hz));
}

} // namespace

Survey::Survey(const BandFormat& format, std::size_t stepSamples, const BandParameters& parameters)
    : m_format(format)
    , m_parameters(parameters.survey)
    , m_leastSwing(parameters.signal.finder.leastSwing)
    , m_size(static_cast<std::size_t>(
          kiss_fft_next_fast_size(static_cast<int>(2 * HOP_STEPS * stepSamples))))
    , m_bins(format.isComplex ? m_size : m_size / 2)
    , m_spacing_Hz(format.rate_Hz / static_cast<double>(m_size))
    , m_window(2 * HOP_STEPS * stepSamples)
    , m_transform(kiss_fft_alloc(static_cast<int>(m_size), 0, nullptr, nullptr), kiss_fft_free)
{
    m_toSignal = 1.0 / (m_window.sum * m_window.sum);
    m_toNoise = 1.0 / (m_window.squares * static_cast<double>(stepSamples));
    m_powers.resize(m_bins * static_cast<std::size_t>(KEPT_FRAMES));
    m_floors.resize((m_bins + PIECE_BINS - 1) / PIECE_BINS);
    m_usualFloors.resize(m_floors.size());
    m_frameFloors.assign(static_cast<std::size_t>(KEPT_FLOORS),
                         std::vector<float>(m_floors.size()));
}

Survey::~Survey() = default;

void Survey::compute(std::int64_t frame, const std::complex<float>* samples)
{
    std::vector<std::complex<float>> input(m_size);
    for (std::size_t n = 0; n < m_window.values.size(); ++n)
        input[n] = samples[n] * m_window.values[n];
    std::vector<std::complex<float>> output(m_size);
    kiss_fft(m_transform.get(), reinterpret_cast<const kiss_fft_cpx*>(input.data()),
             reinterpret_cast<kiss_fft_cpx*>(output.data()));
    float* const powers = &m_powers[static_cast<std::size_t>(frame % KEPT_FRAMES) * m_bins];
    const std::size_t lowest = m_format.isComplex ? (m_size + 1) / 2 : 0;
    for (std::size_t bin = 0; bin < m_bins; ++bin)
        powers[bin] = std::norm(output[(bin + lowest) % m_size]);
    keepFloors(frame, powers);
}

std::size_t Survey::binOf(double frequency_Hz) const
{
    const double bin = frequency_Hz / m_spacing_Hz + static_cast<double>(binsBelowZero());
    return static_cast<std::size_t>(std::clamp(bin + 0.5, 0.0, static_cast<double>(m_bins - 1)));
}

double Survey::frequencyOf(double bin) const
{
    return (bin - static_cast<double>(binsBelowZero())) * m_spacing_Hz;
}

void Survey::measureNoise(std::size_t piece, bool usual)
{
    const std::int64_t count = std::min(m_end, KEPT_FRAMES);
    if (count < m_parameters.least_frames)
        return;
    if (usual)
        m_usualFloors[piece] =
            floorOf(piece, std::min<std::int64_t>(count, m_parameters.noise_frames));
    m_floors[piece] =
        std::max(m_usualFloors[piece],
                 floorOf(piece, std::min<std::int64_t>(count, m_parameters.newNoise_frames)));
}

float Survey::floorOf(std::size_t piece, std::int64_t count) const
{
    const std::int64_t rank = count / m_parameters.lowOneIn;
    const std::size_t first = piece * PIECE_BINS;
    const std::size_t last = std::min(m_bins, first + PIECE_BINS);
    std::vector<float> lows;
    std::vector<float> values(static_cast<std::size_t>(count));
    for (std::size_t bin = first; bin < last; ++bin) {
        for (std::int64_t age = 0; age < count; ++age)
            values[static_cast<std::size_t>(age)] = frameAt(m_end - 1 - age)[bin];
        std::nth_element(values.begin(), values.begin() + rank, values.end());
        lows.push_back(values[static_cast<std::size_t>(rank)]);
    }
    const auto middle = lows.begin() + static_cast<std::ptrdiff_t>(lows.size() / 2);
    std::nth_element(lows.begin(), middle, lows.end());
    return *middle / static_cast<float>(shareOfMean(rank, count));
}

void Survey::keepFloors(std::int64_t frame, const float* powers)
{
    std::vector<float>& floors = m_frameFloors[static_cast<std::size_t>(frame % KEPT_FLOORS)];
    std::array<float, PIECE_BINS> values = {};
    for (std::size_t piece = 0; piece < floors.size(); ++piece) {
        const std::size_t first = piece * PIECE_BINS;
        const std::size_t count = std::min(PIECE_BINS, m_bins - first);
        const std::size_t rank = std::min(LOW_IN_PIECE, count - 1);
        std::copy_n(powers + first, count, values.begin());
        std::nth_element(values.begin(), values.begin() + rank, values.begin() + count);
        floors[piece] =
            values[rank] / static_cast<float>(shareOfMean(static_cast<std::int64_t>(rank),
                                                          static_cast<std::int64_t>(count)));
    }
}

// The second least of five pieces, so that strong signals beside it do not count.
double Survey::noiseIn(std::int64_t frame, double tone_Hz) const
{
    const std::vector<float>& floors = m_frameFloors[static_cast<std::size_t>(frame % KEPT_FLOORS)];
    const std::size_t piece = binOf(tone_Hz) / PIECE_BINS;
    const std::size_t first = piece - std::min(piece, AROUND_PIECES);
    const std::size_t last = std::min(floors.size(), piece + AROUND_PIECES + 1);
    std::array<float, 2 * AROUND_PIECES + 1> around = {};
    const auto end = std::partial_sort_copy(floors.begin() + static_cast<std::ptrdiff_t>(first),
                                            floors.begin() + static_cast<std::ptrdiff_t>(last),
                                            around.begin(), around.end());
    return static_cast<double>(around[end - around.begin() > 1 ? 1 : 0]) * m_toNoise;
}

// The median of three pieces, so that a signal that fills one does not count.
float Survey::floorAround(std::size_t piece) const
{
    const float own = m_floors[piece];
    const float below = piece > 0 ? m_floors[piece - 1] : own;
    const float above = piece + 1 < m_floors.size() ? m_floors[piece + 1] : own;
    return std::max(std::min(below, above), std::min(std::max(below, above), own));
}

// Outside the edge of a receiver's filter it is what is left of the noise within.
double Survey::floorAt(std::size_t bin) const
{
    const std::size_t piece = bin / PIECE_BINS;
    const double below_Hz = static_cast<double>(bin % PIECE_BINS) * m_spacing_Hz;
    const double above_Hz = static_cast<double>(PIECE_BINS) * m_spacing_Hz - below_Hz;
    auto floor = static_cast<double>(floorAround(piece));
    if (piece > 0)
        floor = std::max(floor, static_cast<double>(floorAround(piece - 1)) * ofEdge(below_Hz));
    if (piece + 1 < m_floors.size())
        floor = std::max(floor, static_cast<double>(floorAround(piece + 1)) * ofEdge(above_Hz));
    return std::max(1e-30, floor);
}

double Survey::noise(double tone_Hz) const
{
    return floorAt(binOf(tone_Hz)) * m_toNoise;
}

double Survey::power(std::int64_t frame, double tone_Hz) const
{
    return static_cast<double>(frameAt(frame)[binOf(tone_Hz)]) * m_toSignal;
}

double Survey::leak(double offset_Hz)
{
    offset_Hz = std::fabs(offset_Hz);
    for (std::size_t i = 1; i < std::size(SKIRT); ++i) {
        if (offset_Hz > SKIRT[i].offset_Hz)
            continue;
        const double share =
            (offset_Hz - SKIRT[i - 1].offset_Hz) / (SKIRT[i].offset_Hz - SKIRT[i - 1].offset_Hz);
        return std::pow(10.0, 0.1 * (SKIRT[i - 1].power_dB +
                                     share * (SKIRT[i].power_dB - SKIRT[i - 1].power_dB)));
    }
    return 0.0;
}

std::vector<KeyedTone> Survey::find(std::size_t piece, std::int64_t count) const
{
    const std::size_t first = piece * PIECE_BINS;
    return findBetween(first, std::min(m_bins, first + PIECE_BINS), count);
}

std::optional<KeyedTone> Survey::findNear(double tone_Hz, double reach_Hz, std::int64_t count) const
{
    std::optional<KeyedTone> best;
    for (const KeyedTone& tone :
         findBetween(binOf(tone_Hz - reach_Hz), binOf(tone_Hz + reach_Hz) + 1, count)) {
        if (!best || tone.signal > best->signal)
            best = tone;
    }
    return best;
}

// Peaks whose bin lies in [first, last).
std::vector<KeyedTone> Survey::findBetween(std::size_t first, std::size_t last,
                                           std::int64_t count) const
{
    std::vector<KeyedTone> tones;
    count = std::min({count, m_end, KEPT_FRAMES});
    if (count < m_parameters.least_frames || m_bins < 8)
        return tones;
    first = std::max<std::size_t>(first, 2);
    last = std::min(last, m_bins - 2);
    if (last <= first)
        return tones;
    const std::size_t begin = first - 2;
    const std::size_t width = last + 2 - begin;
    std::vector<float> mean(width, 0.0F);
    for (std::int64_t age = 0; age < count; ++age) {
        const float* const powers = frameAt(m_end - 1 - age) + begin;
        for (std::size_t i = 0; i < width; ++i)
            mean[i] += powers[i];
    }
    for (float& power : mean)
        power /= static_cast<float>(count);
    const double least =
        1.0 + m_parameters.leastSigmas / std::sqrt(INDEPENDENT * static_cast<double>(count));
    for (std::size_t bin = first; bin < last; ++bin) {
        const std::size_t i = bin - begin;
        const double centre = mean[i];
        if (mean[i] < mean[i - 1] || mean[i] < mean[i - 2] || mean[i] <= mean[i + 1] ||
            mean[i] <= mean[i + 2])
            continue;
        const double floor = floorAt(bin);
        if (centre < least * floor)
            continue;
        double spread = 0.0;
        for (std::int64_t age = 0; age < count; ++age) {
            const double difference = static_cast<double>(frameAt(m_end - 1 - age)[bin]) - centre;
            spread += difference * difference;
        }
        spread /= static_cast<double>(count);
        if (spread < m_leastSwing * centre * std::max(floor, 1e-4 * centre))
            continue;
        const double left = std::log(std::max(mean[i - 1], 1e-30F));
        const double right = std::log(std::max(mean[i + 1], 1e-30F));
        const double curvature = left - 2.0 * std::log(centre) + right;
        const double shift =
            curvature < 0.0 ? std::clamp(0.5 * (left - right) / curvature, -0.5, 0.5) : 0.0;
        // With the key down a share q of the time: excess = q P, spread = q (1 - q) P^2 + noise
        // terms.
        const double excess = centre - floor;
        const double keyed = spread - floor * floor - 2.0 * excess * floor;
        const double power = excess + std::max(0.0, keyed / excess);
        KeyedTone tone;
        tone.tone_Hz = frequencyOf(static_cast<double>(bin) + shift);
        tone.signal = power * m_toSignal;
        tone.noise = floor * m_toNoise;
        tone.excess = centre / floor;
        tones.push_back(tone);
    }
    return tones;
}

} // namespace demodulator
