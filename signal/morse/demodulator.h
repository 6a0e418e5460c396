// SPDX-License-Identifier: MIT
// Sound of keyed Morse to symbol codes with times.
#pragma once

#include "signal/morse/parameters.h"
#include "signal/morse/symbolsink.h"

#include <cstddef>
#include <memory>
#include <optional>

namespace demodulator {

struct Settings
{
    double sampleRate_Hz = 8000.0;
    std::optional<double> tone_Hz;   ///< look for the signal within 50 Hz of this
    std::optional<double> speed_wpm; ///< expect this speed, within 20 %
    /// False: a signal is heard again once it is known what comes after, which reads fading and
    /// weak ones better. Codes come some 25 seconds late then, or at the end of the input.
    bool isLive = true;
    Parameters parameters = {}; ///< what the stages are tuned with
};

class Observer;

/// A demodulator of a rate outside limits.h hears nothing; a tone or speed outside counts as not
/// set.
/// Sink and observer must outlive the demodulator. Not for use from several threads at once.
class Demodulator
{
public:
    Demodulator(const Settings& settings, SymbolSink& sink, Observer* observer = nullptr);
    ~Demodulator();
    Demodulator(const Demodulator&) = delete;
    Demodulator& operator=(const Demodulator&) = delete;

    /// Mono, full scale +-1, pieces of any size: the result does not depend on how the input is
    /// cut. Samples that are no number count as silence.
    void push(const float* samples, std::size_t count);

    /// End of input: everything heard is emitted. What is pushed afterwards is ignored.
    void finish();

private:
    class Private;
    std::unique_ptr<Private> m_d;
};

} // namespace demodulator
