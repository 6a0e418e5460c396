// SPDX-License-Identifier: MIT
#include "signal/band/stepbank.h"

#include "signal/numbers.h"
#include "signal/timing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <kiss_fft.h>

namespace demodulator {

namespace {

constexpr std::size_t SIZE_STEPS = 4; // filters lie 62.5 Hz apart, closer than they are wide
constexpr int TAPS = 6;               // filters that make up the one at a tone: exact to 0.1 %
constexpr int BELOW = TAPS / 2 - 1;   // of these, below the place
constexpr int PLACES = 64;            // between two filters, for which the taps are known
constexpr std::size_t BLOCK = 24;     // filters, 1.5 kHz: more than one signal and its clicks
constexpr std::size_t LOW_ONE_IN = 4; // of their powers: neighbours fill less than the rest
constexpr double LOW_OF_MEAN = 0.281; // the sixth of 24 powers of noise, over their mean

// Of the window's square, at a frequency in units of the spacing between filters.
double response(const std::vector<float>& window, double spacings, std::size_t size)
{
    double sum = 0.0;
    const double middle = 0.5 * static_cast<double>(window.size() - 1);
    for (std::size_t n = 0; n < window.size(); ++n) {
        const double weight = static_cast<double>(window[n]) * static_cast<double>(window[n]);
        sum += weight * std::cos(2.0 * PI * spacings * (static_cast<double>(n) - middle) /
                                 static_cast<double>(size));
    }
    return sum;
}

// Weights of the filters around a place between two of them whose sum is, within the window, as
// near as possible to a filter at that place: least squares.
std::array<double, TAPS> tapsAt(double place, const std::vector<float>& window, std::size_t size)
{
    std::array<std::array<double, TAPS + 1>, TAPS> rows = {};
    for (int i = 0; i < TAPS; ++i) {
        for (int j = 0; j < TAPS; ++j)
            rows[i][j] = response(window, i - j, size);
        rows[i][TAPS] = response(window, static_cast<double>(i - BELOW) - place, size);
    }
    for (int pivot = 0; pivot < TAPS; ++pivot) {
        for (int row = 0; row < TAPS; ++row) {
            if (row == pivot)
                continue;
            const double factor = rows[row][pivot] / rows[pivot][pivot];
            for (int column = pivot; column <= TAPS; ++column)
                rows[row][column] -= factor * rows[pivot][column];
        }
    }
    std::array<double, TAPS> taps = {};
    for (int i = 0; i < TAPS; ++i)
        taps[i] = rows[i][TAPS] / rows[i][i];
    return taps;
}

std::size_t transformSize(std::size_t least)
{
    return static_cast<std::size_t>(kiss_fft_next_fast_size(static_cast<int>(least)));
}

} // namespace

StepBank::StepBank(const BandFormat& format, double history_s)
    : m_format(format)
    , m_stepSamples(static_cast<std::size_t>(std::max(1L, std::lround(STEP_s * format.rate_Hz))))
    , m_size(transformSize(SIZE_STEPS * m_stepSamples))
    , m_filters(format.isComplex ? m_size : m_size / 2 + 1)
    , m_spacing_Hz(format.rate_Hz / static_cast<double>(m_size))
    , m_keptSteps(static_cast<std::int64_t>(history_s / step_s()))
    , m_transform(kiss_fft_alloc(static_cast<int>(m_size), 0, nullptr, nullptr), kiss_fft_free)
    , m_blocks((m_filters + BLOCK - 1) / BLOCK)
{
    const std::size_t length = WINDOW_STEPS * m_stepSamples;
    for (std::size_t n = 0; n < length; ++n) {
        const double value =
            1.0 - std::cos(2.0 * PI * (static_cast<double>(n) + 0.5) / static_cast<double>(length));
        m_window.push_back(static_cast<float>(value / static_cast<double>(length)));
    }
    for (int place = 0; place <= PLACES; ++place) {
        for (const double tap : tapsAt(static_cast<double>(place) / PLACES, m_window, m_size))
            m_taps.push_back(static_cast<float>(tap));
    }
    m_ring.resize(static_cast<std::size_t>(m_keptSteps) * m_filters);
    m_restRing.resize(static_cast<std::size_t>(m_keptSteps) * m_blocks);
}

StepBank::~StepBank() = default;

void StepBank::compute(std::int64_t step, const std::complex<float>* samples)
{
    // The middle of the window is moment 0 of the transform, which makes phases those of the
    // middle.
    std::vector<std::complex<float>> input(m_size);
    const std::size_t half = m_window.size() / 2;
    for (std::size_t n = 0; n < m_window.size(); ++n)
        input[(n + m_size - half) % m_size] = samples[n] * m_window[n];
    std::vector<std::complex<float>> output(m_size);
    kiss_fft(m_transform.get(), reinterpret_cast<const kiss_fft_cpx*>(input.data()),
             reinterpret_cast<kiss_fft_cpx*>(output.data()));
    const auto slot = static_cast<std::size_t>(step % m_keptSteps);
    std::complex<float>* const filters = &m_ring[slot * m_filters];
    std::copy_n(output.begin(), m_filters, filters);
    noteRest(filters, &m_restRing[slot * m_blocks]);
}

void StepBank::noteRest(const std::complex<float>* filters, float* rests) const
{
    std::array<float, BLOCK> powers;
    for (std::size_t block = 0; block < m_blocks; ++block) {
        const std::size_t first = block * BLOCK;
        const std::size_t count = std::min(BLOCK, m_filters - first);
        for (std::size_t i = 0; i < count; ++i)
            powers[i] = std::norm(filters[first + i]);
        const auto wanted = powers.begin() + static_cast<std::ptrdiff_t>(
                                                 std::max<std::size_t>(count / LOW_ONE_IN, 1) - 1);
        std::nth_element(powers.begin(), wanted,
                         powers.begin() + static_cast<std::ptrdiff_t>(count));
        // Windows that overlap: the noise of a sum of steps is twice that of one, a step.
        rests[block] = *wanted * static_cast<float>(2.0 / LOW_OF_MEAN);
    }
}

// Frequencies below 0 lie at the upper end of the transform; sound has none.
std::size_t StepBank::filterOf(long index) const
{
    const auto size = static_cast<long>(m_size);
    const auto wrapped = static_cast<std::size_t>(((index % size) + size) % size);
    return std::min(wrapped, m_filters - 1);
}

std::complex<double> StepBank::value(std::int64_t step, double frequency_Hz) const
{
    const double place = frequency_Hz / m_spacing_Hz;
    const auto below = static_cast<long>(std::floor(place));
    const auto row =
        static_cast<std::size_t>(std::lround((place - static_cast<double>(below)) * PLACES));
    const float* const taps = &m_taps[row * TAPS];
    const std::complex<float>* const filters =
        &m_ring[static_cast<std::size_t>(step % m_keptSteps) * m_filters];
    std::complex<float> sum = 0.0F;
    for (int i = 0; i < TAPS; ++i)
        sum += taps[i] * filters[filterOf(below - BELOW + i)];
    return sum;
}

std::complex<float> StepBank::filter(std::int64_t step, long index) const
{
    const long half = static_cast<long>(m_size) / 2;
    if (index > half || index < (m_format.isComplex ? -half : 0))
        return 0.0F;
    return m_ring[static_cast<std::size_t>(step % m_keptSteps) * m_filters + filterOf(index)];
}

// In whole numbers, so that it stays exact over days.
double StepBank::turnsOf(long index, std::int64_t step) const
{
    const auto size = static_cast<std::int64_t>(m_size);
    const auto perStep = index * static_cast<std::int64_t>(m_stepSamples) % size;
    return static_cast<double>(perStep * (step % size) % size) / static_cast<double>(size);
}

double StepBank::scale() const
{
    // Sound has half of each tone at frequencies below 0.
    return (m_format.isComplex ? 1.0 : 2.0) * static_cast<double>(m_stepSamples) /
           static_cast<double>(m_size);
}

double StepBank::rest(std::int64_t step, double frequency_Hz) const
{
    const std::size_t filter = filterOf(std::lround(frequency_Hz / m_spacing_Hz));
    return static_cast<double>(
        m_restRing[static_cast<std::size_t>(step % m_keptSteps) * m_blocks + filter / BLOCK]);
}

Step BandMixer::step(std::int64_t step, double tone_Hz)
{
    Step result;
    result.value = m_bank.value(step, tone_Hz) * std::polar(1.0, -m_phase);
    result.rest = m_bank.rest(step, tone_Hz);
    result.tone_Hz = tone_Hz;
    m_phase = std::fmod(m_phase + 2.0 * PI * tone_Hz * m_bank.step_s(), 2.0 * PI);
    return result;
}

} // namespace demodulator
