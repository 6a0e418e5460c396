// SPDX-License-Identifier: MIT
#include "signal/morse/follower.h"

#include <algorithm>
#include <vector>

namespace demodulator {

namespace {

constexpr std::int64_t FLOOR_FRAMES = 31; // 1 s

} // namespace

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
        step.floor = floorAround(finder, finder.frames() - 1 - age) / m_baseband.stepSamples();
        m_chain.push(step);
    }
}

// The middle one of the floors of frames around one, so that neither a mark's edge nor a crash of
// static counts, while a step in the noise keeps its place.
double Follower::floorAround(const ToneFinder& finder, std::int64_t frame)
{
    if (frame == m_floorFrame)
        return m_floor;
    const std::int64_t first = std::max(
        {frame - FLOOR_FRAMES / 2, finder.frames() - ToneFinder::KEPT_FRAMES, std::int64_t{0}});
    const std::int64_t last = std::min(frame + FLOOR_FRAMES / 2, finder.frames() - 1);
    m_floors.erase(m_floors.begin(), m_floors.lower_bound(first));
    for (std::int64_t i = first; i <= last; ++i) {
        if (m_floors.count(i) == 0)
            // cppcheck-suppress stlFindInsert; the floor is computed only where it is missing
            m_floors[i] = finder.floorNear(m_chain.tone_Hz(), finder.frames() - 1 - i);
    }
    std::vector<double> sorted;
    for (const auto& floor : m_floors)
        sorted.push_back(floor.second);
    m_floorFrame = frame;
    m_floor = 0.0;
    if (!sorted.empty()) {
        const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
        std::nth_element(sorted.begin(), middle, sorted.end());
        m_floor = *middle;
    }
    return m_floor;
}

} // namespace demodulator
