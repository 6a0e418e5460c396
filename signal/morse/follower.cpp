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
    while (!m_chain.ended() && m_baseband.neededEnd(m_chain.end_step()) <= history.end()) {
        m_baseband.setTone(m_chain.tone_Hz());
        Step step = m_baseband.step(history, m_chain.end_step());
        step.floor =
            m_noise.before(finder, m_chain.tone_Hz(), history.end() - sample(m_chain.end_step())) /
            m_baseband.stepSamples();
        m_chain.push(step);
    }
}

} // namespace demodulator
