// SPDX-License-Identifier: MIT
// Stage: where there may be a pair of tones, and how strong the noise about them is.
#pragma once

#include "signal/samples/powerspectra.h"
#include "signal/teleprinter/line.h"
#include "signal/teleprinter/parameters.h"
#include "signal/teleprinter/tonepair.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace teleprinter {

struct TonesFound
{
    ByTone<double> tones_Hz; ///< lower tone first
    bool areMerged;          ///< make one hump; their energies may not go against each other
};

class Spectrum
{
public:
    explicit Spectrum(double rate_Hz, const SpectrumParameters& parameters = {});

    /// Samples between two frames, and of one.
    std::int64_t hop() const { return static_cast<std::int64_t>(length() / 2); }
    std::size_t length() const { return m_spectra.window().values.size(); }
    /// The next frame: length() samples.
    void push(const float* samples) { m_spectra.push(samples); }

    /// How wide a tone of a speed is, in steps of frequency to each side; speeds that are alike in
    /// this have the same pairs.
    std::size_t reach(double baud) const;

    /// Pairs of tones, the likelier first; those of a speed are as wide as it. From the last so
    /// many seconds.
    std::vector<TonesFound> pairs(const Known& known, double baud, double seconds) const;

    /// Variance of a sample of noise that is everywhere as dense as about these tones.
    double noise(double lower_Hz, double upper_Hz, double baud, double seconds) const;

private:
    struct Peak
    {
        double tone_Hz;
        double excess; // over the noise about it
    };

    std::vector<Peak> peaks(const std::vector<double>& power, std::size_t reach) const;
    std::vector<double> meanPower(double seconds) const;
    double binWidth_Hz() const { return m_rate_Hz / static_cast<double>(length()); }

    SpectrumParameters m_parameters;
    double m_rate_Hz;
    demodulator::PowerSpectra m_spectra;
};

} // namespace teleprinter
