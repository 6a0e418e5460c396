// SPDX-License-Identifier: MIT
// One signal of a band: its chain, the mixer that feeds it, and what it gave since it was last
// asked. Listeners share nothing that changes, so that each may work in a thread of its own.
#pragma once

#include "signal/band/formernoise.h"
#include "signal/band/parameters.h"
#include "signal/band/stationchange.h"
#include "signal/band/stepbank.h"
#include "signal/band/survey.h"
#include "signal/morse/signalchain.h"

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace demodulator {

/// What a chain gave, kept until it can be handed on in order.
struct BandEvent
{
    enum class Kind { Started, Symbol, Stopped } kind;
    int code;
    std::int64_t time_us;
    SignalReport report;
};

/// Another station went on where one stopped.
struct Successor
{
    SignalGuess guess;
    std::int64_t begin_step; ///< after the last mark of the one before
};

class Listener : private SymbolSink, private Observer
{
public:
    /// Hears the steps [begin_step, end_step). Bank, survey and parameters must outlive it.
    Listener(const StepBank& bank, const Survey& survey, const BandParameters& parameters,
             const SignalGuess& guess, std::int64_t begin_step, std::int64_t end_step = INT64_MAX);
    ~Listener() override;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// From its first step on what it decides is kept for takeEvents(). Before the first
    /// process().
    void release() { m_released = true; }
    bool released() const { return m_released; }

    /// Goes on to `end_step`, with the noise that the survey knows.
    void process(std::int64_t end_step);
    void finish();
    /// Its transmission is over.
    bool ended() const { return m_ended; }
    /// Who ended it, if somebody else did.
    const std::optional<Successor>& successor() const { return m_successor; }
    /// End of the last mark that was emitted.
    std::int64_t lastEmitted_step() const;
    /// Begin of the first mark after a step, if one has been decided.
    std::optional<std::int64_t> firstMarkAfter(std::int64_t step) const;

    /// Null before the first process().
    const SignalChain* chain() const { return m_chain ? &*m_chain : nullptr; }
    double tone_Hz() const { return m_chain ? m_chain->tone_Hz() : m_guess.tone_Hz; }
    SignalGuess heard() const { return m_chain ? m_chain->heard() : m_guess; }
    double snr_dB() const;
    std::int64_t begin_step() const { return m_begin; }

    /// Power at its tone in a frame of the survey that is still kept, or in one beside it if that
    /// was more.
    float powerAround(std::int64_t frame) const
    {
        return m_powers[static_cast<std::size_t>(frame % Survey::KEPT_FRAMES)];
    }

    /// What may be handed on; after a pause that is nothing until it is sure who sends.
    std::vector<BandEvent> takeEvents();

private:
    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void step(const FollowedStep& step) override;
    void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) override;
    double noiseAt(std::int64_t step);
    StationMark measured(std::int64_t begin_step, std::int64_t end_step) const;
    void judge(StationChange::Verdict verdict);
    void note(const BandEvent& event);
    SignalReport ownReport() const;
    double inDecibels(double signal, double noise) const;
    void transmissionStarted(std::int64_t time_us) override;
    void symbol(int code, std::int64_t time_us) override;
    void transmissionStopped(std::int64_t time_us, const SignalReport& report) override;
    void settleInPause();
    void notePowers();

    const StepBank& m_bank;
    const Survey& m_survey;
    const BandParameters& m_parameters;
    SignalGuess m_guess;
    std::int64_t m_begin;
    std::int64_t m_end;
    bool m_ended = false;
    bool m_released = false;
    BandMixer m_mixer;
    FormerNoise m_former;
    std::optional<SignalChain> m_chain; // is large, so it is made where there are several threads
    std::int64_t m_settled = 0;         // the mark after which it was
    std::vector<BandEvent> m_events;
    bool m_waiting = false; // there was a pause, and it is not sure who sends
    std::size_t m_sure = 0; // events up to that pause
    StationChange m_change;
    std::optional<Successor> m_successor;
    std::deque<StationMark> m_marks; // the last ones
    std::array<float, Survey::KEPT_FRAMES> m_powers = {};
    std::int64_t m_noted = -1; // frames before this one
};

} // namespace demodulator
