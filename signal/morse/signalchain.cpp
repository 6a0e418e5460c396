// SPDX-License-Identifier: MIT
#include "signal/morse/signalchain.h"

#include "signal/morse/echometer.h"
#include "signal/morse/leveltracker.h"
#include "signal/morse/phasetracker.h"
#include "signal/morse/tonetracker.h"
#include "signal/numbers.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace demodulator {

namespace {

// Signal over noise of one step to power of the tone over noise in 500 Hz: half the amplitude
// squared is half the power, and the noise of a step is that of 1 / STEP_s on both sides of 0.
constexpr double IN_500_Hz = 1.0 / (500.0 * STEP_s);

// Power of a step of the weakest one.
double weakestMark(const std::vector<HeardMark>& marks)
{
    double weakest = std::numeric_limits<double>::infinity();
    for (const HeardMark& mark : marks) {
        if (!mark.isForeign && mark.length_steps >= MarkMeter::SHORTEST_STEPS)
            weakest = std::min(weakest, std::norm(mark.sum / mark.length_steps));
    }
    return weakest;
}

} // namespace

SignalChain::SignalChain(const SignalGuess& guess, double step_s, std::int64_t begin_step,
                         std::optional<double> speed_wpm, SymbolSink& sink, Observer* observer,
                         const Parameters& parameters)
    : m_parameters(parameters)
    , m_likelihood(parameters.likelihood)
    , m_timing(step_s, speed_wpm, parameters.timing)
    , m_trellis(m_timing, m_likelihood, parameters.trellis)
    , m_bursts(parameters.burst, step_s, guess.noise)
    , m_classifier(sink, observer)
    , m_decider(m_timing, m_classifier, parameters.decision, step_s, begin_step)
    , m_observer(observer)
    , m_tone(guess.tone_Hz, step_s, MarkLikelihood::KEPT_STEPS)
    , m_meter(m_likelihood, m_tone, step_s, parameters.tone, parameters.judge)
    , m_spread(guess.spread)
    , m_hasEcho(guess.hasEcho)
    , m_step_s(step_s)
    , m_origin(begin_step)
    , m_judge(parameters.judge)
{
    setLevel(guess.signal, guess.noise);
}

std::int64_t SignalChain::steps(double duration_s) const
{
    return std::llround(duration_s / m_step_s);
}

void SignalChain::setLevel(double signal, double noise)
{
    Level level;
    level.noise = noise;
    level.signal = std::max(signal, m_parameters.level.weakestRatio * noise);
    level.dot_steps = m_unit_steps;
    if (m_spread.off_Hz > 0.0)
        level.coherent_steps = m_parameters.tone.coherentTurn / (m_spread.off_Hz * m_step_s);
    level.hasEcho = m_hasEcho;
    m_likelihood.setLevel(level);
}

void SignalChain::setNoise(double noise)
{
    setLevel(m_likelihood.level().signal, noise);
}

bool SignalChain::steady() const
{
    return m_carrierUntil > 0 &&
           m_likelihood.end() - m_carrierUntil < steps(m_parameters.decision.steady_s);
}

SignalGuess SignalChain::heard() const
{
    const Level& level = m_likelihood.level();
    return {m_tone.tone_Hz(), level.signal, level.noise, m_spread, m_hasEcho};
}

void SignalChain::push(const Step& step)
{
    if (m_state == State::Ended)
        return;
    const std::complex<double> value = m_tone.turn(step);
    // Noise that has fallen since is weighed as what it was.
    const double noise = m_likelihood.level().noise;
    const double former = step.floor > m_parameters.burst.formerNoise * noise ? step.floor : 0.0;
    take(value, std::max(former, m_bursts.noiseOf(step.rest, noise)));
}

void SignalChain::pushKnown(const KnownStep& step)
{
    if (m_state == State::Ended)
        return;
    m_isKnown = true;
    m_tone.set(step.tone_Hz);
    Level level = step.level;
    level.dot_steps = m_unit_steps;
    m_likelihood.setLevel(level);
    m_likelihood.setPhase(step.phase, step.concentration);
    take(m_tone.turn({step.value, 0.0, step.tone_Hz, 0.0}), step.noise);
}

void SignalChain::confirm()
{
    if (m_state == State::Listening)
        m_state = State::Confirmed;
}

void SignalChain::take(std::complex<double> value, double noise)
{
    if (m_observer) {
        const double middle_us =
            1e6 * m_step_s * static_cast<double>(m_origin + m_likelihood.end());
        m_observer->step({std::llround(middle_us), m_tone.tone_Hz(), value, m_likelihood.level(),
                          std::max(noise, m_likelihood.level().noise)});
    }
    m_likelihood.push(value, noise);
    m_trellis.advance();
    if (m_likelihood.end() % std::max<std::int64_t>(1, steps(m_parameters.echo.every_s)) == 0)
        lookForEcho();
    if (m_likelihood.end() % std::max<std::int64_t>(1, steps(m_parameters.decision.review_s)) == 0)
        review(false);
}

void SignalChain::lookForEcho()
{
    const std::int64_t kept = std::min(m_likelihood.end(), MarkLikelihood::KEPT_STEPS);
    std::vector<float> powers;
    for (std::int64_t n = 0; n < std::min(kept, steps(m_parameters.echo.span_s)); ++n)
        powers.push_back(m_likelihood.power(static_cast<std::size_t>(n)));
    const Level& level = m_likelihood.level();
    m_hasEcho = hasEcho(powers, level.noise, m_step_s, m_hasEcho, m_parameters.echo);
}

void SignalChain::settle()
{
    if (m_state != State::Ended)
        review(true);
}

void SignalChain::finish()
{
    if (m_state == State::Ended)
        return;
    review(true);
    m_classifier.stop();
    m_state = State::Ended;
}

void SignalChain::review(bool last)
{
    const std::int64_t now = m_likelihood.end();
    const std::int64_t followed = steps(m_parameters.tone.span_s);
    const bool confirmed = m_state == State::Confirmed;
    const Path path =
        m_trellis.path(confirmed ? std::min(m_decider.emitted_step(), now - followed) : 0);
    if (path.segments.empty())
        return;
    std::vector<bool> isForeign;
    for (const Segment& segment : path.segments)
        isForeign.push_back(isMark(segment.kind) &&
                            m_meter.isForeign(segment.begin_step, segment.end_step, m_spread));
    look(path, isForeign);
    judge(path, isForeign);
    follow(heardMarks(path, isForeign));
    if (m_state != State::Confirmed || !m_released)
        return;
    const Level& level = m_likelihood.level();
    const std::int64_t until = last ? now : now - steps(delay_s(level));
    m_decider.emitUntil(path, isForeign, now, until,
                        {m_tone.tone_Hz(), IN_500_Hz * level.signal / level.noise,
                         std::min(level.signal, m_weakestMark) * level.dot_steps / level.noise});
    if (m_classifier.lastMarkEnd_us() > 0 && !m_classifier.active())
        m_state = State::Ended;
}

// How long a later mark may still change what was heard.
double SignalChain::delay_s(const Level& level) const
{
    const DecisionParameters& decision = m_parameters.decision;
    if (m_found.margin < decision.sureMargin)
        return decision.delay_s;
    const double dot = level.signal * level.dot_steps / std::max(level.noise, 1e-30);
    const double least =
        std::max(decision.leastDelay_s, decision.leastDelay_units * m_unit_steps * m_step_s);
    return std::clamp(decision.delay_s * decision.strongDot / dot,
                      std::min(least, decision.delay_s), decision.delay_s);
}

// What the path says of the signal as a whole.
void SignalChain::look(const Path& path, const std::vector<bool>& isForeign)
{
    m_found.marks = 0;
    m_found.margin = path.margin;
    bool isCarrier = false;
    for (std::size_t i = 0; i < path.segments.size(); ++i) {
        const Segment& segment = path.segments[i];
        if (!isMark(segment.kind) || isForeign[i])
            continue;
        isCarrier = isCarrier || segment.kind == Kind::Carrier;
        m_found.lastMark = m_origin + segment.end_step;
        m_unit_steps = segment.unit_steps;
        if (i + 1 == path.segments.size())
            continue;
        if (m_state == State::Listening && m_found.marks == 0)
            m_found.firstMark = m_origin + segment.begin_step;
        ++m_found.marks;
    }
    if (m_state == State::Listening && path.complete && !isCarrier &&
        path.gain > m_parameters.decision.confirmingGain &&
        m_found.marks >= m_parameters.decision.leastMarks)
        m_state = State::Confirmed;
    if (isCarrier)
        m_carrierUntil = m_likelihood.end();
    m_found.endOfCarrier = endOfCarrier(path, isForeign);
}

// Of a mark too long for a dash of the hand that keys the others, with keying after it.
std::optional<std::int64_t> SignalChain::endOfCarrier(const Path& path,
                                                      const std::vector<bool>& isForeign) const
{
    std::int64_t longest = 0;
    std::int64_t second = 0;
    std::int64_t end = 0;
    int marksAfter = 0;
    for (std::size_t i = 0; i < path.segments.size(); ++i) {
        const Segment& segment = path.segments[i];
        if (!isMark(segment.kind) || isForeign[i])
            continue;
        const std::int64_t length = segment.end_step - segment.begin_step;
        if (length > longest) {
            second = longest;
            longest = length;
            end = segment.end_step;
            marksAfter = 0;
        } else {
            second = std::max(second, length);
            ++marksAfter;
        }
    }
    const DecisionParameters& decision = m_parameters.decision;
    if (static_cast<double>(longest) <= decision.farLonger * static_cast<double>(second) ||
        marksAfter < decision.leastMarks)
        return {};
    return m_origin + end;
}

// Of a signal that is emitted, marks that are decided are counted once; all others as the path has
// them now, since at another speed they were others.
void SignalChain::judge(const Path& path, const std::vector<bool>& isForeign)
{
    const std::int64_t settled = m_likelihood.end() - steps(m_parameters.decision.delay_s);
    MorseJudge all = m_judge;
    std::int64_t judged = m_judged;
    double gap_units = 0.0;
    for (std::size_t i = 0; i + 1 < path.segments.size(); ++i) {
        const Segment& segment = path.segments[i];
        const double units =
            static_cast<double>(segment.end_step - segment.begin_step) / segment.unit_steps;
        if (!isMark(segment.kind)) {
            gap_units = units;
            continue;
        }
        if ((segment.begin_step + segment.end_step) / 2 < judged)
            continue;
        all.mark({units, segment.unit_steps, gap_units,
                  isForeign[i] || m_meter.strays(segment.begin_step, segment.end_step, m_spread)});
        judged = segment.end_step;
        if (m_released && segment.end_step < settled) {
            m_judge = all;
            m_judged = judged;
        }
    }
    m_found.verdict = all.verdict();
    m_found.side = all.side();
    m_found.judgedMarks = all.marks();
    if (m_found.verdict == MorseJudge::Verdict::Morse &&
        m_found.judgedMarks >= m_parameters.judge.sureMarks)
        m_found.wasMorse = true;
}

// The marks of the path that have ended and are recent enough to matter.
std::vector<HeardMark> SignalChain::heardMarks(const Path& path,
                                               const std::vector<bool>& isForeign) const
{
    const std::int64_t now = m_likelihood.end();
    const std::int64_t oldest =
        now - steps(std::max(m_parameters.level.span_s, m_parameters.tone.span_s));
    std::vector<HeardMark> marks;
    for (std::size_t i = 0; i < path.segments.size(); ++i) {
        const std::int64_t begin = path.segments[i].begin_step;
        const std::int64_t end = path.segments[i].end_step;
        if (!isMark(path.segments[i].kind) || end == now || end < oldest ||
            now - begin > MarkLikelihood::KEPT_STEPS)
            continue;
        HeardMark mark = m_meter.measured(begin, end);
        mark.isForeign = isForeign[i];
        marks.push_back(mark);
    }
    return marks;
}

void SignalChain::follow(std::vector<HeardMark> marks)
{
    m_weakestMark = weakestMark(marks);
    if (m_isKnown)
        return;
    if (!marks.empty()) {
        m_spread = toneSpread(marks, m_spread, m_parameters.tone);
        const Level& level = m_likelihood.level();
        setLevel(trackLevel(marks, level.signal, level.noise, m_parameters.decision.review_s,
                            m_parameters.level),
                 level.noise);
    }
    const Level& level = m_likelihood.level();
    m_tone.set(trackTone(marks, m_tone.tone_Hz(), level.signal, level.noise, m_parameters.tone));

    const double dot = level.signal * level.dot_steps / level.noise;
    PhaseEstimate estimate;
    if (m_state == State::Confirmed && dot > m_parameters.phase.weakestDot &&
        dot < m_parameters.phase.strongestDot) {
        marks.erase(std::remove_if(marks.begin(), marks.end(),
                                   [](const HeardMark& mark) { return mark.isForeign; }),
                    marks.end());
        estimate = trackPhase(marks, m_tone.tone_Hz(), level.noise, m_parameters.phase);
    }
    if (!(estimate.concentration > 0.0)) {
        m_likelihood.forgetPhase();
        return;
    }
    if (std::fabs(estimate.frequency_Hz - m_tone.tone_Hz()) < m_parameters.tone.largestPull_Hz)
        m_tone.set(estimate.frequency_Hz);
    m_likelihood.setPhase(TWO_PI * std::remainder(estimate.cycles - m_tone.nextCycles(), 1.0),
                          estimate.concentration);
}

} // namespace demodulator
