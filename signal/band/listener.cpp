// SPDX-License-Identifier: MIT
#include "signal/band/listener.h"

#include "signal/numbers.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace demodulator {

namespace {

// For firstMarkAfter(): as many as anybody keys within the seconds that are kept.
constexpr std::size_t KEPT_MARKS = 128;

} // namespace

Listener::Listener(const StepBank& bank, const Survey& survey, const BandParameters& parameters,
                   const SignalGuess& guess, std::int64_t begin_step, std::int64_t end_step)
    : m_bank(bank)
    , m_survey(survey)
    , m_parameters(parameters)
    , m_guess(guess)
    , m_begin(begin_step)
    , m_end(end_step)
    , m_mixer(bank)
    , m_change(bank.step_s(), parameters.change)
{
    notePowers();
}

Listener::~Listener() = default;

void Listener::process(std::int64_t end_step)
{
    notePowers();
    if (!m_chain) {
        m_chain.emplace(m_guess, m_bank.step_s(), m_begin, std::nullopt,
                        static_cast<SymbolSink&>(*this), static_cast<Observer*>(this),
                        m_parameters.signal);
        if (m_released)
            m_chain->release();
    }
    m_chain->setNoise(m_survey.noise(m_chain->tone_Hz()));
    const std::int64_t until = std::min(end_step, m_end);
    while (m_chain->end_step() < until && !m_chain->ended() && !m_successor) {
        Step step = m_mixer.step(m_chain->end_step(), m_chain->tone_Hz());
        step.floor = noiseAt(m_chain->end_step());
        m_chain->push(step);
        settleInPause();
    }
    if (m_chain->ended() || m_chain->end_step() >= m_end || m_successor)
        finish();
}

// Of the frame whose middle is at a step, or next to it.
double Listener::noiseAt(std::int64_t step)
{
    const std::int64_t end = m_survey.end();
    return m_former.at(
        (step + Survey::HOP_STEPS / 2) / Survey::HOP_STEPS,
        std::max(std::int64_t{0}, end - Survey::KEPT_FLOORS), end - 1,
        [this](std::int64_t frame) { return m_survey.noiseIn(frame, m_chain->tone_Hz()); });
}

// A station that answers must not affect what came before.
void Listener::settleInPause()
{
    const std::int64_t last = m_chain->lastMark_step();
    if (!m_chain->confirmed() || last == m_settled)
        return;
    const double silence_s = static_cast<double>(m_chain->end_step() - last) * m_bank.step_s();
    const ChangeParameters& change = m_parameters.change;
    if (silence_s > std::max(change.leastPause_s, change.leastPause_units * m_chain->unit_s())) {
        m_settled = last;
        m_chain->settle();
    }
}

void Listener::finish()
{
    if (m_ended || !m_chain)
        return;
    m_chain->finish();
    m_ended = true;
}

std::int64_t Listener::lastEmitted_step() const
{
    return m_successor ? m_change.lastOwn_step() : m_chain->lastEmitted_step();
}

std::optional<std::int64_t> Listener::firstMarkAfter(std::int64_t step) const
{
    for (const StationMark& mark : m_marks) {
        if (mark.begin_step > step)
            return mark.begin_step;
    }
    return {};
}

double Listener::snr_dB() const
{
    return inDecibels(heard().signal, heard().noise);
}

// Noise of a step is that in the width of 1 / STEP_s.
double Listener::inDecibels(double signal, double noise) const
{
    return 10.0 * std::log10(std::max(1e-3, signal / (noise * m_bank.step_s() * 500.0)));
}

void Listener::notePowers()
{
    const std::int64_t end = m_survey.end();
    const std::int64_t oldest = std::max<std::int64_t>(0, end - Survey::KEPT_FRAMES + 1);
    // The newest one known had no neighbour yet.
    for (std::int64_t frame = std::max(m_noted - 1, oldest); frame < end; ++frame) {
        double power = 0.0;
        for (std::int64_t near = std::max(oldest, frame - 1); near <= std::min(end - 1, frame + 1);
             ++near)
            power = std::max(power, m_survey.power(near, tone_Hz()));
        m_powers[static_cast<std::size_t>(frame % Survey::KEPT_FRAMES)] = static_cast<float>(power);
    }
    m_noted = end;
}

std::vector<BandEvent> Listener::takeEvents()
{
    if (!m_waiting)
        m_sure = m_events.size();
    const auto sure = m_events.begin() + static_cast<std::ptrdiff_t>(m_sure);
    std::vector<BandEvent> events(m_events.begin(), sure);
    m_events.erase(m_events.begin(), sure);
    m_sure = 0;
    return events;
}

// Frequency and strength of a mark, from its own steps alone: how far the phase turns from step to
// step says roughly, how far in a third of the mark says exactly how far off the tone it is.
StationMark Listener::measured(std::int64_t begin_step, std::int64_t end_step) const
{
    StationMark mark = {begin_step, end_step, tone_Hz(), 0.0, 0.0};
    const std::int64_t length = end_step - begin_step;
    BandMixer mixer(m_bank);
    std::vector<std::complex<double>> steps;
    for (std::int64_t step = begin_step; step < end_step; ++step) {
        steps.push_back(mixer.step(step, tone_Hz()).value);
        mark.signal += std::norm(steps.back()) / static_cast<double>(length);
    }
    double cycles = 0.0; // a step
    for (const std::int64_t lag : {std::int64_t{1}, std::max<std::int64_t>(1, length / 3)}) {
        std::complex<double> turn = 0.0;
        for (auto n = static_cast<std::size_t>(lag); n < steps.size(); ++n)
            turn += steps[n] * std::conj(steps[n - static_cast<std::size_t>(lag)]);
        const double expected = cycles * static_cast<double>(lag);
        cycles = (expected + std::remainder(std::arg(turn) / (2.0 * PI) - expected, 1.0)) /
                 static_cast<double>(lag);
    }
    mark.tone_Hz += cycles / m_bank.step_s();
    // Half of the noise of a step is in its power: windows overlap.
    mark.signal = std::max(0.0, mark.signal - 0.5 * heard().noise);
    return mark;
}

void Listener::mark(std::int64_t begin_us, std::int64_t end_us, double unit_us)
{
    if (m_successor)
        return;
    const double step_us = 1e6 * m_bank.step_s();
    const auto stepOf = [step_us](std::int64_t time_us) {
        return std::llround(static_cast<double>(time_us) / step_us + 0.5);
    };
    StationMark mark = measured(stepOf(begin_us), stepOf(end_us));
    mark.unit_steps = unit_us / step_us;
    m_marks.push_back(mark);
    if (m_marks.size() > KEPT_MARKS)
        m_marks.pop_front();
    judge(m_change.add(mark));
}

void Listener::judge(StationChange::Verdict verdict)
{
    m_waiting = verdict == StationChange::Verdict::Waiting;
    if (m_waiting && m_change.others().size() == 1)
        m_sure = m_events.size();
    if (verdict != StationChange::Verdict::Other)
        return;
    // What was emitted of the other one since the pause is emitted by its own listener.
    const StationMark other = StationChange::meanOf(m_change.others());
    m_successor =
        Successor{{other.tone_Hz, other.signal, heard().noise},
                  m_change.lastOwn_step() +
                      static_cast<std::int64_t>(m_parameters.change.afterLast_s / m_bank.step_s())};
    m_events.erase(m_events.begin() + static_cast<std::ptrdiff_t>(m_sure), m_events.end());
}

void Listener::note(const BandEvent& event)
{
    if (m_successor && event.kind != BandEvent::Kind::Stopped)
        return;
    m_events.push_back(event);
}

void Listener::sound(const float* /*samples*/, std::size_t /*count*/, double /*rate_Hz*/) {}

void Listener::step(const FollowedStep& /*step*/) {}

void Listener::transmissionStarted(std::int64_t time_us)
{
    note({BandEvent::Kind::Started, 0, time_us, {}});
}

void Listener::symbol(int code, std::int64_t time_us)
{
    note({BandEvent::Kind::Symbol, code, time_us, {}});
}

void Listener::transmissionStopped(std::int64_t time_us, const SignalReport& report)
{
    if (!m_successor)
        judge(m_change.decide());
    if (!m_successor) {
        note({BandEvent::Kind::Stopped, 0, time_us, report});
        return;
    }
    const double end_step = static_cast<double>(m_change.lastOwn_step()) - 0.5;
    note(
        {BandEvent::Kind::Stopped, 0, std::llround(end_step * 1e6 * m_bank.step_s()), ownReport()});
}

// Of the last marks of this station alone: the chain has heard some of its successor.
SignalReport Listener::ownReport() const
{
    const StationMark mean = StationChange::meanOf(m_change.own());
    SignalReport report;
    report.tone_Hz = mean.tone_Hz;
    report.speed_wpm = speedOf_wpm(mean.unit_steps * m_bank.step_s());
    report.snr_dB = inDecibels(mean.signal, heard().noise);
    return report;
}

} // namespace demodulator
