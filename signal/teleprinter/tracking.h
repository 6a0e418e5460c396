// SPDX-License-Identifier: MIT
// Stage: how far tones and clock are off, from elements that were decided.
#pragma once

#include "signal/teleprinter/line.h"
#include "signal/teleprinter/parameters.h"
#include "signal/teleprinter/tonepair.h"

#include <complex>
#include <optional>
#include <vector>

namespace teleprinter {

/// Elements one after the other, each of the length of the line's clock.
struct Decided
{
    double begin = 0.0;    ///< of the first, in samples of the input
    unsigned elements = 0; ///< the first is bit 0, mark is 1
    int count = 0;
};

/// What was seen of the errors; adds up over characters.
class Tracking
{
public:
    explicit Tracking(const TrackingParameters& parameters = {})
        : m_parameters(parameters)
    {
    }

    /// Takes characters into account; `bit` is the length of an element in samples.
    void add(const TonePair& tones, const std::vector<Decided>& characters, double bit);
    const TrackingParameters& parameters() const { return m_parameters; }
    /// How far a tone is above where it was looked for; unambiguous within a baud.
    double toneError_Hz(std::size_t tone, double rate_Hz, double bit) const;
    /// The same from one element to the next: finer, within half a baud.
    double fineToneError_Hz(std::size_t tone, double rate_Hz, double bit) const;
    /// Variance of that, as its scatter shows it.
    double fineVariance_Hz2(std::size_t tone, double rate_Hz, double bit) const;
    /// Elements, and the sum of their energies: squares of what the filter of their tone gave.
    double elements() const { return m_elements; }
    double energy() const { return m_energy; }
    /// How much longer an element is than it was taken to be, as a share.
    double lengthError() const;
    /// How much later characters begin than they were taken to, in samples.
    double beginError(double bit) const;

private:
    TrackingParameters m_parameters;
    ByTone<std::complex<double>> m_halves = {0.0, 0.0};
    ByTone<std::complex<double>> m_turns = {0.0, 0.0}; // from one element to the next
    ByTone<double> m_magnitudes = {0.0, 0.0};          // of these
    ByTone<double> m_counts = {0.0, 0.0};
    // Magnitude summed up with elements a little shorter, as they are, a little longer; and with
    // characters a little earlier, as they are, a little later.
    double m_lengths[3] = {0.0, 0.0, 0.0};
    double m_begins[3] = {0.0, 0.0, 0.0};
    double m_elements = 0.0;
    double m_energy = 0.0;
};

/// How strong a signal is over its noise, over all that was added.
class SignalStrength
{
public:
    /// Elements of `bit` samples, and the variance of a sample of noise (Spectrum::noise).
    void add(const Tracking& tracking, double noise, double rate_Hz, double bit);
    /// In 500 Hz; none before the first element.
    std::optional<double> snr_dB() const;

private:
    double m_ratios = 0.0;
    double m_elements = 0.0;
};

/// Takes a share of the errors off the tones: as much as they are surer than what the tones may
/// have drifted since the last time.
void followTones(const Tracking& tracking, Line& line, double rate_Hz, double bit);

} // namespace teleprinter
