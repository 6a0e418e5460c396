// SPDX-License-Identifier: MIT
// A signal chain and the mixer that makes its steps from the sound of the last seconds, with the
// noise that each step had around it.
#pragma once

#include "signal/morse/baseband.h"
#include "signal/morse/noisearound.h"
#include "signal/morse/signalchain.h"
#include "signal/morse/tonefinder.h"
#include "signal/samples/samples.h"

#include <cstdint>
#include <optional>

namespace demodulator {

/// Sink and observer must outlive it. Not for use from several threads at once.
class Follower
{
public:
    /// Hears the sound from a sample on, which the history has to hold at the first process().
    Follower(const SignalGuess& guess, double rate_Hz, std::int64_t begin_sample,
             std::optional<double> speed_wpm, const Parameters& parameters, SymbolSink& sink,
             Observer* observer = nullptr);

    SignalChain& chain() { return m_chain; }
    const SignalChain& chain() const { return m_chain; }

    /// Goes on to the end of the history, which is the end of the finder's newest frame.
    void process(const SampleHistory& history, const ToneFinder& finder);

    /// The moments of the chain as samples of the sound.
    std::int64_t firstMark_sample() const { return sample(m_chain.firstMark_step()); }
    std::int64_t lastMark_sample() const { return sample(m_chain.lastMark_step()); }
    std::int64_t lastEmitted_sample() const { return sample(m_chain.lastEmitted_step()); }
    std::optional<std::int64_t> endOfCarrier_sample() const
    {
        const std::optional<std::int64_t> step = m_chain.endOfCarrier_step();
        return step ? std::optional(sample(*step)) : std::nullopt;
    }

private:
    std::int64_t sample(std::int64_t step) const { return step * m_baseband.stepSamples(); }

    Baseband m_baseband;
    SignalChain m_chain;
    NoiseAround m_noise;
};

} // namespace demodulator
