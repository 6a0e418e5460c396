// SPDX-License-Identifier: MIT
// Stage: find the keyed tone. A spectrum every 32 ms, of which the last seconds are kept; a keyed
// tone is where the power swings far more than noise or a steady carrier does.
#pragma once

#include "signal/morse/parameters.h"
#include "signal/samples/powerspectra.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace demodulator {

struct ToneCandidate
{
    double tone_Hz;
    double level; ///< square of half the key-down amplitude
    double noise; ///< noise power of one sample, if the noise near the tone were white
    double swing; ///< how much more the power varies than that of noise (1)
};

class ToneFinder
{
public:
    explicit ToneFinder(double rate_Hz, const FinderParameters& parameters = {});

    static constexpr std::int64_t KEPT_FRAMES = 256; ///< 8 s

    /// Samples of one frame, and between the begins of two.
    std::size_t frameLength() const { return m_spectra.window().values.size(); }
    std::size_t hop() const { return m_hop; }

    /// The spectrum of frameLength() samples becomes the newest frame.
    void push(const float* samples) { m_spectra.push(samples); }
    std::int64_t frames() const { return m_spectra.frames(); }

    struct Band
    {
        double lowest_Hz;
        double highest_Hz;
    };
    /// The strongest keyed tone over the newest `count` frames within a band, but not in any of
    /// those left out.
    std::optional<ToneCandidate> find(std::int64_t count, const Band& band,
                                      const std::vector<Band>& leftOut = {}) const;

    /// Mean power near a tone of `count` frames, leaving out the newest `age`.
    double power(double tone_Hz, std::int64_t age, std::int64_t count) const;

    /// Whether another tone is on whenever this one is off, as with frequency shift keying.
    bool hasComplement(double tone_Hz, std::int64_t count) const;

    /// Whether this tone is one of several that take turns, so that the power of all together stays
    /// the same.
    bool takesTurns(double tone_Hz, std::int64_t count) const;

    /// Noise power of one sample as ToneCandidate::noise, near any tone, over the newest frames.
    double noiseNear(double tone_Hz, std::int64_t count) const;

    /// The same of the one frame of this age, which says little by itself; 0 when it is not kept.
    double floorNear(double tone_Hz, std::int64_t age) const;

    /// What stays at the place of the tone while its key is up, in the same measure.
    double noiseInGaps(double tone_Hz, std::int64_t count) const;

private:
    double noiseBeside(double tone_Hz, std::int64_t count) const;
    std::vector<float> meanPower(std::int64_t count, std::size_t first, std::size_t last) const;
    std::size_t binOf(double frequency_Hz) const;

    FinderParameters m_parameters;
    double m_rate_Hz;
    std::size_t m_hop;
    PowerSpectra m_spectra;
};

} // namespace demodulator
