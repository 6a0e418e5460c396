// SPDX-License-Identifier: MIT
#include "signal/morse/signalchain.h"

#include "signal/morse/phasetracker.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr std::int64_t REVIEW_STEPS = 8; // decisions are looked at every 32 ms
constexpr double DELAY_us = 0.9e6;       // what is older is decided
// Log likelihood of keying over noise that makes a signal a signal: noise reaches it once in e^25
// tries, with some hundred tries a second.
constexpr double CONFIRMING_GAIN = 25.0;
constexpr std::int64_t LEAST_MARKS = 2; // one may be a click
constexpr double WEAKEST_RATIO = 0.35;  // signal to noise of one step: -7.5 dB in 500 Hz
constexpr double LEVEL_SPAN_us = 3.0e6; // marks not older than this tell the level
constexpr double TONE_SPAN_us = 3.0e6;  // and the tone
constexpr double LEVEL_MEMORY_us = 0.2e6;
constexpr double WEAK_RATIO = 7.5;      // signal to noise of one step below which that takes longer
constexpr double LONGEST_MEMORY = 15.0; // so many times
constexpr double STEADY_us = 4.0e6;     // a tone without keying is remembered
constexpr double BURST = 4.0;           // times the usual power
constexpr double MUTED = 0.01;          // of it: a squelch is no measure of what is usual
constexpr double USUAL_REST_PER_STEP = 0.002; // 2 s
constexpr double MEAN_REST_PER_STEP = 0.001;  // 4 s, as the noise near the tone is measured
constexpr double FASTEST_FADE_dB_per_s = 20.0;
constexpr double FOREIGN_TONE_Hz = 30.0;
constexpr double OTHER_HAND = 0.2; // change of the logarithm of speed that a hand does not make
constexpr double WEAK_DOT = 4.0;
constexpr double STRONG_DOT = 45.0; // energy of a dot over noise density
constexpr double TONE_MEMORY_s = 2.0;
constexpr double LEAST_TONE_ERROR_Hz = 0.3;
constexpr double STEEPEST_TONE_Hz_per_s = 1.0;
constexpr double LARGEST_PULL_Hz = 1.0; // of the tone, per review
// Signal over noise of one step to power of the tone over noise in 500 Hz: half the amplitude
// squared is half the power, and the noise of a step is that of 1 / STEP_s on both sides of 0.
constexpr double IN_500_Hz = 1.0 / (500.0 * STEP_s);

} // namespace

SignalChain::SignalChain(const SignalGuess& guess, double step_s, std::int64_t begin_step,
                         std::optional<double> speed_wpm, SymbolSink& sink, Observer* observer)
    : m_timing(step_s, speed_wpm)
    , m_trellis(m_timing, m_likelihood)
    , m_classifier(sink, observer)
    , m_observer(observer)
    , m_tone_Hz(guess.tone_Hz)
    , m_stepDuration_us(1e6 * step_s)
    , m_origin(begin_step)
    , m_tones(MarkLikelihood::KEPT_STEPS)
    , m_cycles(MarkLikelihood::KEPT_STEPS)
{
    Level level;
    level.noise = guess.noise;
    m_usualRest = level.noise;
    m_weakest = WEAKEST_RATIO * level.noise;
    level.signal = std::max(guess.signal, m_weakest);
    level.dot_steps = m_unit_steps;
    m_likelihood.setLevel(level);
}

void SignalChain::setNoise(double noise)
{
    Level level = m_likelihood.level();
    level.noise = noise;
    m_weakest = WEAKEST_RATIO * level.noise;
    level.signal = std::max(level.signal, m_weakest);
    m_likelihood.setLevel(level);
}

bool SignalChain::steady() const
{
    const auto since = static_cast<double>(m_likelihood.end() - m_carrierUntil);
    return m_carrierUntil > 0 && since * m_stepDuration_us < STEADY_us;
}

SignalGuess SignalChain::heard() const
{
    const Level& level = m_likelihood.level();
    return {m_tone_Hz, level.signal, level.noise};
}

std::int64_t SignalChain::time_us(std::int64_t step) const
{
    // Boundaries lie halfway between the centres of two steps.
    return std::llround((static_cast<double>(m_origin + step) - 0.5) * m_stepDuration_us);
}

void SignalChain::push(const Step& step)
{
    if (m_ended)
        return;
    const auto slot = static_cast<std::size_t>(m_likelihood.end() % MarkLikelihood::KEPT_STEPS);
    const double step_s = m_stepDuration_us / 1e6;
    m_tones[slot] = static_cast<float>(m_tone_Hz);
    m_cycles[slot] = m_nextCycles;
    m_nextCycles += m_tone_Hz * step_s;
    std::complex<double> value = step.value;
    if (m_mixedAside_cycles != 0.0)
        value *= std::polar(1.0, 2.0 * PI * m_mixedAside_cycles);
    m_mixedAside_cycles =
        std::remainder(m_mixedAside_cycles + (step.tone_Hz - m_tone_Hz) * step_s, 1.0);
    if (m_observer) {
        const auto middle = static_cast<double>(m_origin + m_likelihood.end());
        m_observer->step(
            {std::llround(middle * m_stepDuration_us), m_tone_Hz, value, m_likelihood.level()});
    }
    m_likelihood.push(value, burst(step.rest));
    m_trellis.advance();
    if (m_likelihood.end() % REVIEW_STEPS == 0)
        review(false);
}

// Noise of a crash of static or a click, 0 where there is none: power beside the tone that rises
// far over what it usually is. It is as much as that power would be if it were spread evenly; where
// a receiver's filter leaves less of it than of what is near the tone, as many times more.
double SignalChain::burst(double rest)
{
    if (rest > MUTED * m_usualRest) {
        const double first = 1.0 / ++m_restSteps;
        m_usualRest += (std::min(rest, BURST * m_usualRest) - m_usualRest) *
                       std::max(USUAL_REST_PER_STEP, first);
        m_meanRest += (rest - m_meanRest) * std::max(MEAN_REST_PER_STEP, first);
    }
    if (rest <= BURST * m_usualRest)
        return 0.0;
    return rest * std::max(1.0, m_likelihood.level().noise / m_meanRest);
}

void SignalChain::finish()
{
    if (!m_ended) {
        review(true);
        m_classifier.stop();
        m_ended = true;
    }
}

void SignalChain::review(bool last)
{
    const std::int64_t now = m_likelihood.end();
    const auto followed = static_cast<std::int64_t>(TONE_SPAN_us / m_stepDuration_us);
    const std::int64_t since = m_confirmed ? std::min(m_committed, now - followed) : 0;
    const Path path = m_trellis.path(since);
    if (path.segments.empty())
        return;

    m_marks = 0;
    m_margin = path.margin;
    bool carrier = false;
    for (const Segment& segment : path.segments) {
        if (!isMark(segment.kind) || foreign(segment))
            continue;
        carrier = carrier || segment.kind == Kind::Carrier;
        m_lastMark = m_origin + segment.end_step;
        m_unit_steps = segment.unit_steps;
        if (&segment == &path.segments.back())
            continue;
        if (!m_confirmed && m_marks == 0)
            m_firstMark = m_origin + segment.begin_step;
        ++m_marks;
    }
    if (!m_confirmed) {
        m_confirmed =
            path.complete && path.gain > CONFIRMING_GAIN && !carrier && m_marks >= LEAST_MARKS;
    }
    if (carrier)
        m_carrierUntil = m_likelihood.end();
    follow(path);
    if (m_confirmed && m_released)
        commit(path, last);
}

void SignalChain::follow(const Path& path)
{
    followLevel(path);
    followTone(path);
    followPhase(path);
}

void SignalChain::followLevel(const Path& path)
{
    const std::int64_t now = m_likelihood.end();
    Level level = m_likelihood.level();
    // What is weak has to be averaged for longer.
    const double weakness =
        std::clamp(WEAK_RATIO * level.noise / level.signal, 1.0, LONGEST_MEMORY);
    const double memory_us = LEVEL_MEMORY_us * weakness;
    double signal = 0.0;
    double weights = 0.0;
    for (const Segment& segment : path.segments) {
        if (!isMark(segment.kind) || segment.end_step == now || tooOld(segment, LEVEL_SPAN_us))
            continue;
        const double age_us = static_cast<double>(now - segment.end_step) * m_stepDuration_us;
        const auto length = static_cast<double>(segment.end_step - segment.begin_step);
        const double magnitude = std::abs(m_likelihood.sum(segment.begin_step, segment.end_step));
        const double weight = length * std::exp(-age_us / memory_us);
        signal += weight * (magnitude * magnitude / (length * length) - level.noise / length);
        weights += weight;
    }
    if (weights > 0.0) {
        // A mark that was put together wrongly looks weak: fading is slower than that.
        const double least = level.signal * std::pow(10.0, -0.1 * FASTEST_FADE_dB_per_s * 1e-6 *
                                                               m_stepDuration_us * REVIEW_STEPS);
        level.signal = std::max({signal / weights, least, m_weakest});
        level.dot_steps = m_unit_steps;
        m_likelihood.setLevel(level);
    }
}

// The tone now, from the tones of the last marks: a straight line through them, each weighted with
// how well it is known, its slope held near zero.
void SignalChain::followTone(const Path& path)
{
    const std::int64_t now = m_likelihood.end();
    const double step_s = m_stepDuration_us / 1e6;
    const double noise = std::max(m_likelihood.level().noise, m_likelihood.level().signal / 100.0);
    double s0 = 0.0;
    double s1 = 0.0;
    double s2 = 1.0 / (STEEPEST_TONE_Hz_per_s * STEEPEST_TONE_Hz_per_s);
    double t0 = 0.0;
    double t1 = 0.0;
    for (const Segment& segment : path.segments) {
        if (!isMark(segment.kind) || segment.end_step == now || tooOld(segment, TONE_SPAN_us) ||
            foreign(segment))
            continue;
        const std::int64_t length = segment.end_step - segment.begin_step;
        const std::int64_t lag = std::max<std::int64_t>(1, length / 3);
        const std::complex<double> turn =
            m_likelihood.advance(segment.begin_step, segment.end_step, lag);
        if (!(std::abs(turn) > 0.0))
            continue;
        const std::int64_t middle = (segment.begin_step + segment.end_step) / 2;
        const double mixed_Hz =
            m_tones[static_cast<std::size_t>(middle % MarkLikelihood::KEPT_STEPS)];
        const double perHertz = 2.0 * PI * static_cast<double>(lag) * step_s;
        const double offset_Hz = mixed_Hz + std::arg(turn) / perHertz - m_tone_Hz;
        const double age_s = static_cast<double>(middle - now) * step_s;
        const double information = std::abs(turn) / noise * perHertz * perHertz;
        const double weight = std::exp(age_s / TONE_MEMORY_s) /
                              (LEAST_TONE_ERROR_Hz * LEAST_TONE_ERROR_Hz + 1.0 / information);
        s0 += weight;
        s1 += weight * age_s;
        s2 += weight * age_s * age_s;
        t0 += weight * offset_Hz;
        t1 += weight * offset_Hz * age_s;
    }
    if (s0 > 0.0) {
        const double pull_Hz = (t0 * s2 - t1 * s1) / (s0 * s2 - s1 * s1);
        m_tone_Hz += std::clamp(0.5 * pull_Hz, -LARGEST_PULL_Hz, LARGEST_PULL_Hz);
    }
}

void SignalChain::followPhase(const Path& path)
{
    const std::int64_t now = m_likelihood.end();
    const double step_s = m_stepDuration_us / 1e6;
    const Level& level = m_likelihood.level();
    // A strong signal needs no such help, and is better off without any belief in its phase; a very
    // weak one finds the phase that it looks for in the noise.
    const double dot = level.signal * level.dot_steps / level.noise;
    if (!m_confirmed || !(dot > WEAK_DOT && dot < STRONG_DOT)) {
        m_likelihood.forgetPhase();
        return;
    }
    std::vector<PhaseMark> marks;
    for (const Segment& segment : path.segments) {
        if (!isMark(segment.kind) || segment.end_step == now || tooOld(segment, TONE_SPAN_us) ||
            foreign(segment))
            continue;
        const double middle = 0.5 * static_cast<double>(segment.begin_step + segment.end_step - 1);
        const auto slot = static_cast<std::size_t>(static_cast<std::int64_t>(middle) %
                                                   MarkLikelihood::KEPT_STEPS);
        PhaseMark mark;
        mark.time_s = middle * step_s;
        mark.cycles = m_cycles[slot] +
                      (middle - std::floor(middle)) * step_s * static_cast<double>(m_tones[slot]);
        mark.sum = m_likelihood.sum(segment.begin_step, segment.end_step);
        mark.energy = std::norm(mark.sum) / level.noise /
                      static_cast<double>(segment.end_step - segment.begin_step);
        marks.push_back(mark);
    }
    const double now_s = static_cast<double>(now) * step_s;
    const PhaseEstimate estimate = trackPhase(marks, m_tone_Hz, now_s);
    if (estimate.concentration > 0.0 &&
        std::fabs(estimate.frequency_Hz - m_tone_Hz) < LARGEST_PULL_Hz)
        m_tone_Hz = estimate.frequency_Hz;
    if (estimate.concentration > 0.0) {
        m_likelihood.setPhase(2.0 * PI * std::remainder(estimate.cycles - m_nextCycles, 1.0),
                              estimate.concentration);
    } else {
        m_likelihood.forgetPhase();
    }
}

// Belongs to another signal, whose tone is far off.
bool SignalChain::foreign(const Segment& segment) const
{
    const std::int64_t length = segment.end_step - segment.begin_step;
    if (length > MarkLikelihood::KEPT_STEPS / 2 ||
        m_likelihood.end() - segment.begin_step >= MarkLikelihood::KEPT_STEPS)
        return false;
    const std::complex<double> turn = m_likelihood.advance(segment.begin_step, segment.end_step, 1);
    const double offset_Hz = std::arg(turn) / (2.0 * PI) * 1e6 / m_stepDuration_us;
    return std::fabs(offset_Hz) > FOREIGN_TONE_Hz;
}

bool SignalChain::tooOld(const Segment& segment, double span_us) const
{
    const std::int64_t now = m_likelihood.end();
    return static_cast<double>(now - segment.end_step) * m_stepDuration_us > span_us ||
           now - segment.begin_step > MarkLikelihood::KEPT_STEPS / 2;
}

DecidedMark SignalChain::describe(const Segment& segment) const
{
    DecidedMark mark;
    mark.kind = segment.kind;
    mark.begin_us = time_us(segment.begin_step);
    mark.end_us = time_us(segment.end_step);
    mark.unit_us = segment.unit_steps * m_stepDuration_us;
    mark.tone_Hz = m_tone_Hz;
    mark.snr = IN_500_Hz * m_likelihood.level().signal / m_likelihood.level().noise;
    return mark;
}

void SignalChain::commit(const Path& path, bool last)
{
    const std::int64_t now = m_likelihood.end();
    std::int64_t decided = now - static_cast<std::int64_t>(DELAY_us / m_stepDuration_us);
    if (last)
        decided = now;

    for (const Segment& segment : path.segments) {
        const bool open = &segment == &path.segments.back();
        const double unit_us = segment.unit_steps * m_stepDuration_us;
        const auto length = static_cast<double>(segment.end_step - segment.begin_step);
        // Where a mark or space begins may still move a little: what lies mostly before the end of
        // the last mark that was given has been given.
        if ((segment.begin_step + segment.end_step) / 2 < m_committed)
            continue;
        if (isMark(segment.kind)) {
            if (open || segment.end_step > decided)
                break;
            if (foreign(segment))
                continue;
            if (std::fabs(std::log(segment.unit_steps / m_givenUnit_steps)) > OTHER_HAND)
                m_timing.forget();
            m_givenUnit_steps = segment.unit_steps;
            if (m_pendingGap) {
                m_timing.learn(m_pendingGap->kind, m_pendingGap->units);
                m_pendingGap.reset();
            }
            m_classifier.mark(describe(segment));
            m_timing.learn(segment.kind, length / segment.unit_steps);
            m_committed = segment.end_step;
            continue;
        }
        if (segment.begin_step > decided)
            break;
        if (open || length * m_stepDuration_us > Classifier::endingSilence_us(unit_us)) {
            m_classifier.gapSoFar(length * m_stepDuration_us, unit_us,
                                  m_timing.characterThreshold(), m_timing.wordThreshold());
            break;
        }
        m_classifier.gap(segment.kind);
        m_pendingGap = Gap{segment.kind, length / segment.unit_steps};
    }
    const auto since = static_cast<std::int64_t>(0.5e6 / m_stepDuration_us);
    if (m_committed > m_learnt && now >= m_learnt + since) {
        m_timing.update(m_givenUnit_steps);
        m_learnt = now;
    }
    if (m_classifier.lastMarkEnd_us() > 0 && !m_classifier.active())
        m_ended = true;
}

} // namespace demodulator
