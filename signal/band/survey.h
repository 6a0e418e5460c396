// SPDX-License-Identifier: MIT
// Who is there: a spectrum of the whole band every eight steps, of which the last seconds are kept,
// and the tones in it that rise over the noise around them and are keyed.
#pragma once

#include "signal/band/parameters.h"
#include "signal/band/stepbank.h"
#include "signal/samples/powerspectra.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace demodulator {

/// A tone that swings as keying does. Levels have the scale of a step: see SignalGuess.
struct KeyedTone
{
    double tone_Hz;
    double signal;
    double noise;
    double excess; ///< mean power over that of the noise
};

class Survey
{
public:
    /// Steps between two spectra.
    static constexpr std::int64_t HOP_STEPS = 8;
    /// Spectra that are kept: 4 s.
    static constexpr std::int64_t KEPT_FRAMES = 128;
    /// Frames of which the noise is kept: 16 s.
    static constexpr std::int64_t KEPT_FLOORS = 512;

    /// `stepSamples` as the bank has it.
    Survey(const BandFormat& format, std::size_t stepSamples,
           const BandParameters& parameters = {});
    ~Survey();
    Survey(const Survey&) = delete;
    Survey& operator=(const Survey&) = delete;

    /// Samples of a spectrum's window; frame n is centred on sample n * HOP_STEPS * stepSamples.
    std::size_t windowSamples() const { return m_window.values.size(); }

    /// Computes a spectrum; `samples` points to the begin of its window. Different frames may be
    /// computed by different threads at once.
    void compute(std::int64_t frame, const std::complex<float>* samples);
    /// All frames before this one count from now on.
    void advanceTo(std::int64_t end) { m_end = end; }
    std::int64_t end() const { return m_end; }

    /// Pieces into which the band is cut for what follows; different pieces may be looked at by
    /// different threads at once.
    std::size_t pieces() const { return m_floors.size(); }
    /// Measures the noise of a piece again, that of the last 0.75 s and, if `usual`, that of the
    /// last 3 s. The larger one counts.
    void measureNoise(std::size_t piece, bool usual = true);
    /// The keyed tones of a piece over the newest `count` frames, in order of frequency.
    std::vector<KeyedTone> find(std::size_t piece, std::int64_t count) const;
    /// The strongest within `reach_Hz` of a tone.
    std::optional<KeyedTone> findNear(double tone_Hz, double reach_Hz, std::int64_t count) const;

    /// Variance that noise gives one step.
    double noise(double tone_Hz) const;
    /// The same, in one frame of those of which it is kept: a guess from few powers.
    double noiseIn(std::int64_t frame, double tone_Hz) const;
    /// What noise() is in the scale of power().
    double noisePower(double noise) const { return noise * m_toSignal / m_toNoise; }
    /// Power at a tone in one frame, in the scale of KeyedTone::signal.
    double power(std::int64_t frame, double tone_Hz) const;
    /// What a tone of power 1 gives that far beside it, at most, its key clicks included.
    static double leak(double offset_Hz);

private:
    std::size_t binsBelowZero() const { return m_format.isComplex ? m_size / 2 : 0; }
    std::size_t binOf(double frequency_Hz) const;
    double frequencyOf(double bin) const;
    const float* frameAt(std::int64_t frame) const
    {
        return &m_powers[static_cast<std::size_t>(frame % KEPT_FRAMES) * m_bins];
    }
    void keepFloors(std::int64_t frame, const float* powers);
    float floorAround(std::size_t piece) const;
    double floorAt(std::size_t bin) const;
    float floorOf(std::size_t piece, std::int64_t count) const;
    std::vector<KeyedTone> findBetween(std::size_t first, std::size_t last,
                                       std::int64_t count) const;

    BandFormat m_format;
    SurveyParameters m_parameters;
    double m_leastSwing;
    std::size_t m_size;
    std::size_t m_bins;
    double m_spacing_Hz;
    double m_toSignal = 0.0; // from power in a spectrum to level of a tone, to noise of a step
    double m_toNoise = 0.0;
    Window m_window;
    std::unique_ptr<kiss_fft_state, void (*)(void*)> m_transform;
    std::vector<float> m_powers;                   // by frame, then bin, lowest frequency first
    std::vector<std::vector<float>> m_frameFloors; // by frame, then piece
    std::vector<float> m_floors;                   // by piece: power of a bin without signal
    std::vector<float> m_usualFloors;              // the same, over a longer time
    std::int64_t m_end = 0;
};

} // namespace demodulator
