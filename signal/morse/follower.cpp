// SPDX-License-Identifier: MIT
#include "signal/morse/follower.h"

namespace demodulator {

Follower::Follower(const SignalGuess& guess, double rate_Hz, std::int64_t begin_sample,
                   std::optional<double> speed_wpm, const Parameters& parameters, SymbolSink& sink,
                   Observer* observer)
    : m_baseband(rate_Hz, guess.tone_Hz)
    , m_chain(guess, m_baseband.stepSamples() / rate_Hz, begin_sample / m_baseband.stepSamples(),
              speed_wpm, sink, observer, parameters)
{
}

void Follower::process(const SampleHistory& history, const ToneFinder& finder)
{
    const auto hop = static_cast<std::int64_t>(finder.hop());
    const auto half = static_cast<std::int64_t>(finder.frameLength()) / 2;
    while (!m_chain.ended() && m_baseband.neededEnd(m_chain.end_step()) <= history.end()) {
        m_baseband.setTone(m_chain.tone_Hz());
        Step step = m_baseband.step(history, m_chain.end_step());
        const std::int64_t age = (history.end() - half - sample(m_chain.end_step())) / hop;
        step.floor = m_noise.at(finder, m_chain.tone_Hz(), finder.frames() - 1 - age) /
                     m_baseband.stepSamples();
        m_chain.push(step);
    }
}

} // namespace demodulator
