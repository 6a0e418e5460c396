// SPDX-License-Identifier: MIT
#include "signal/morse/rehearing.h"

#include "signal/numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace demodulator {

namespace {

bool isUnsteady(const Level& level)
{
    return level.coherent_steps < Level().coherent_steps;
}

} // namespace

Rehearing::Rehearing(double step_s, std::optional<double> speed_wpm, const Parameters& parameters,
                     SymbolSink& sink, Observer* observer, bool isLast)
    : m_step_s(step_s)
    , m_speed_wpm(speed_wpm)
    , m_parameters(parameters)
    , m_codes(sink, observer)
    , m_observer(observer)
    , m_isLast(isLast)
{
}

Rehearing::~Rehearing() = default;

std::int64_t Rehearing::steps(double duration_s) const
{
    return std::llround(duration_s / m_step_s);
}

void Rehearing::finish()
{
    conclude();
    passOn(std::numeric_limits<double>::infinity());
}

void Rehearing::transmissionStopped(std::int64_t time_us, const SignalReport&)
{
    m_stopped = steps(1e-6 * static_cast<double>(time_us));
}

void Rehearing::sound(const float* samples, std::size_t count, double rate_Hz)
{
    // What another signal takes from the end of this one is known by now.
    if (m_stopped)
        conclude();
    if (!m_observer)
        return;
    m_sound.push_back({{samples, samples + count}, rate_Hz});
    passOn(m_steps.empty() ? std::numeric_limits<double>::infinity()
                           : static_cast<double>(m_heard) * m_step_s);
}

void Rehearing::passOn(double until_s)
{
    for (; !m_sound.empty() && m_passedOn_s < until_s; m_sound.pop_front()) {
        const Piece& piece = m_sound.front();
        m_observer->sound(piece.samples.data(), piece.samples.size(), piece.rate_Hz);
        m_passedOn_s += static_cast<double>(piece.samples.size()) / piece.rate_Hz;
    }
}

void Rehearing::step(const FollowedStep& step)
{
    const std::int64_t at = steps(1e-6 * static_cast<double>(step.time_us));
    if (m_stopped || at != end_step()) {
        // The next may begin before the last mark of this one, which a gap must follow.
        const std::int64_t gap = steps(1e-6 * m_unit_us);
        cut(m_marks.empty() ? at : std::max(at, m_marks.back().end_step + gap));
        conclude();
        m_begin = at;
        m_heard = at;
    }
    m_steps.push_back(step);
    const RehearingParameters& rehearing = m_parameters.rehearing;
    if (end_step() - m_heard >= steps(rehearing.piece_s + rehearing.ahead_s))
        hearUntil(m_heard + steps(rehearing.piece_s));
}

void Rehearing::cut(std::int64_t end)
{
    while (!m_steps.empty() && end_step() > std::max(end, m_heard))
        m_steps.pop_back();
}

void Rehearing::mark(std::int64_t begin_us, std::int64_t end_us, double unit_us)
{
    m_unit_us = unit_us;
    // Edges are no part of it.
    m_marks.push_back({steps(1e-6 * static_cast<double>(begin_us)) + 1,
                       steps(1e-6 * static_cast<double>(end_us)) - 1});
}

// What follows a tone is behind it: where it was is known better soon after.
double Rehearing::laterTone_Hz(std::size_t index) const
{
    const auto later = static_cast<std::size_t>(steps(m_parameters.rehearing.toneLag_s));
    return m_steps[std::min(index + later, m_steps.size() - 1)].tone_Hz;
}

// The steps around now, against the tone as it was known later, and which of them are marks.
std::vector<HeardStep> Rehearing::turned() const
{
    std::vector<HeardStep> turned;
    turned.reserve(m_steps.size());
    double aside_cycles = m_aside_cycles;
    for (std::size_t i = 0; i < m_steps.size(); ++i) {
        const FollowedStep& step = m_steps[i];
        turned.push_back({step.value * std::polar(1.0, TWO_PI * aside_cycles),
                          m_parameters.rehearing.sharedNoise * step.noise});
        aside_cycles += (step.tone_Hz - laterTone_Hz(i)) * m_step_s;
    }
    for (const Mark& mark : m_marks) {
        const std::int64_t end = std::min(mark.end_step, end_step());
        for (std::int64_t n = std::max(mark.begin_step, m_begin); n < end; ++n) {
            HeardStep& step = turned[static_cast<std::size_t>(n - m_begin)];
            step.isMark = std::isfinite(step.noise); // what was lost says nothing
        }
    }
    return turned;
}

bool Rehearing::hasEcho() const
{
    const auto echoes = std::count_if(m_steps.begin(), m_steps.end(),
                                      [](const FollowedStep& step) { return step.level.hasEcho; });
    return static_cast<double>(echoes) >
           m_parameters.rehearing.echoShare * static_cast<double>(m_steps.size());
}

void Rehearing::open(const FollowedStep& step)
{
    m_chain = std::make_unique<SignalChain>(
        SignalGuess{step.tone_Hz, step.level.signal, step.level.noise}, m_step_s, m_heard,
        m_speed_wpm, m_codes, &m_codes, m_parameters);
    m_chain->confirm();
    m_chain->release();
    m_opened = m_heard;
    if (m_isLast)
        m_codes.hold();
}

void Rehearing::close()
{
    m_chain->finish();
    judge();
    // Only the whole of a transmission can be dropped. The end alone may be odd: another station
    // comes into it, or it fades.
    if (m_codes.isHeld() && !m_chain->wasMorse() &&
        m_chain->judgedMarks() >= m_parameters.attention.loneMarks)
        m_codes.drop();
    m_codes.release();
    m_chain.reset();
}

// What was taken for Morse at its beginning may be syllables.
void Rehearing::judge()
{
    const MorseJudge::Verdict verdict = m_chain->verdict();
    if (verdict == MorseJudge::Verdict::Morse || verdict == MorseJudge::Verdict::Dashes)
        m_codes.release();
}

void Rehearing::hearUntil(std::int64_t end)
{
    passOn(static_cast<double>(end) * m_step_s);
    const std::vector<HeardStep> heard = turned();
    const Amplitudes known =
        smoothAmplitude(heard, m_step_s, isUnsteady(m_steps.back().level), m_parameters.rehearing);
    const bool echo = hasEcho();
    for (; m_heard < end; ++m_heard) {
        const auto index = static_cast<std::size_t>(m_heard - m_begin);
        const FollowedStep& step = m_steps[index];
        if (m_chain && m_chain->ended())
            close();
        if (!m_chain)
            open(step);
        const auto& [mean, variance] = known.steps[index];
        // An echo makes a mark stronger or weaker where the two overlap: only the level that was
        // followed is that of a mark.
        const double signal = echo ? step.level.signal : std::norm(mean) + variance;
        KnownStep again = {heard[index].value,   laterTone_Hz(index), step.noise,
                           m_steps.back().level, std::arg(mean),      0.0};
        again.level.noise = step.level.noise;
        again.level.signal = std::max(signal, m_parameters.level.weakestRatio * step.level.noise);
        again.level.hasEcho = echo;
        // A strong mark does not need its phase, which a hole in it would contradict.
        const double trust = std::min(1.0, again.level.noise / again.level.signal);
        if (known.hasPhase)
            again.concentration = std::min(trust * m_parameters.rehearing.largestConcentration,
                                           2.0 * std::norm(mean) / std::max(variance, 1e-30));
        m_chain->pushKnown(again);
    }
    if (m_heard - m_opened >= steps(m_parameters.rehearing.judged_s))
        judge();
    if (m_heard - m_opened >= steps(m_parameters.rehearing.heldAtMost_s))
        m_codes.release();
    const std::int64_t kept = m_heard - steps(m_parameters.rehearing.before_s);
    for (; !m_steps.empty() && m_begin < kept; ++m_begin) {
        m_aside_cycles += (m_steps.front().tone_Hz - laterTone_Hz(0)) * m_step_s;
        m_steps.pop_front();
    }
    while (!m_marks.empty() && m_marks.front().end_step <= m_begin)
        m_marks.pop_front();
}

void Rehearing::conclude()
{
    // What comes in the silence after it may be another station's: no more than ends a word is its.
    const AttentionParameters& attention = m_parameters.attention;
    if (m_stopped)
        cut(*m_stopped + steps(std::max(attention.rivalSilence_s,
                                        attention.rivalSilence_units * 1e-6 * m_unit_us)));
    while (m_heard < end_step())
        hearUntil(std::min(end_step(), m_heard + steps(m_parameters.rehearing.piece_s)));
    if (m_chain)
        close();
    m_steps.clear();
    m_marks.clear();
    m_aside_cycles = 0.0;
    m_begin = m_heard;
    m_stopped.reset();
}

} // namespace demodulator
