// SPDX-License-Identifier: MIT
#include "station/picture/spectrogram.h"

#include "signal/samples/powerspectra.h"

#include <algorithm>
#include <cmath>

namespace inspect {

namespace {

constexpr double WINDOW_s = 0.032; // shorter than a dot of 35 words a minute
constexpr double COLUMN_s = 0.008;
constexpr double SILENCE = 1e-12; // -120 dB

} // namespace

Spectrogram spectrogram(const Sound& sound, const Stretch& time, double lowest_Hz,
                        double highest_Hz)
{
    Spectrogram result;
    if (!(sound.rate_Hz > 0.0))
        return result;
    const auto length = static_cast<std::size_t>(std::lround(WINDOW_s * sound.rate_Hz));
    std::size_t size = 2;
    while (size < 2 * length)
        size *= 2;
    const double bin_Hz = sound.rate_Hz / static_cast<double>(size);
    const int firstBin = std::max(1, static_cast<int>(std::lround(lowest_Hz / bin_Hz)));
    const int lastBin = std::min(static_cast<int>(size / 2) - 1,
                                 static_cast<int>(std::lround(highest_Hz / bin_Hz)));
    if (lastBin < firstBin)
        return result;
    result.rows = lastBin - firstBin + 1;
    result.lowest_Hz = (firstBin - 0.5) * bin_Hz;
    result.highest_Hz = (lastBin + 0.5) * bin_Hz;
    const double duration_s = static_cast<double>(time.to_us - time.from_us) / 1e6;
    result.columns = std::max(1, static_cast<int>(std::lround(duration_s / COLUMN_s)));
    result.power_dB.resize(static_cast<std::size_t>(result.columns) *
                           static_cast<std::size_t>(result.rows));

    demodulator::PowerSpectra spectra(length, size, 1);
    const double fullScale = 0.25 * spectra.window().sum * spectra.window().sum;
    std::vector<float> frame(length);
    const auto count = static_cast<std::int64_t>(sound.samples.size());
    for (int column = 0; column < result.columns; ++column) {
        const double middle_s =
            static_cast<double>(time.from_us) / 1e6 + (column + 0.5) * duration_s / result.columns;
        const std::int64_t first = std::llround(middle_s * sound.rate_Hz) -
                                   static_cast<std::int64_t>(length / 2) - sound.firstSample;
        for (std::size_t n = 0; n < length; ++n) {
            const std::int64_t at = first + static_cast<std::int64_t>(n);
            const bool known = at >= 0 && at < count;
            frame[n] = known ? sound.samples[static_cast<std::size_t>(at)] : 0.0F;
        }
        spectra.push(frame.data());
        for (int row = 0; row < result.rows; ++row) {
            const auto bin = static_cast<std::size_t>(lastBin - row);
            const double power = static_cast<double>(spectra.frame(0)[bin]) / fullScale;
            result
                .power_dB[static_cast<std::size_t>(row) * static_cast<std::size_t>(result.columns) +
                          static_cast<std::size_t>(column)] =
                static_cast<float>(10.0 * std::log10(power + SILENCE));
        }
    }
    return result;
}

} // namespace inspect
