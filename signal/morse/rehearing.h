// SPDX-License-Identifier: MIT
// A transmission heard a second time, some seconds late: what came after is known as well then. It
// stands behind the first hearing as its sink and its observer, so that hearings can follow each
// other.
#pragma once

#include "signal/morse/amplitudesmoother.h"
#include "signal/morse/heldcodes.h"
#include "signal/morse/observer.h"
#include "signal/morse/parameters.h"
#include "signal/morse/signalchain.h"
#include "signal/morse/symbolsink.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

namespace demodulator {

class Rehearing : public SymbolSink, public Observer
{
public:
    /// Sink and observer must outlive it. The last hearing is the one that leaves out what turns
    /// out to be no Morse. `step_s` lies between two steps of the first hearing.
    Rehearing(double step_s, std::optional<double> speed_wpm, const Parameters& parameters,
              SymbolSink& sink, Observer* observer, bool isLast);
    ~Rehearing() override;

    /// End of the input: what is pending is emitted.
    void finish();

    void transmissionStarted(std::int64_t) override {}
    /// Codes of the first hearing do not matter: its marks do.
    void symbol(int, std::int64_t) override {}
    void transmissionStopped(std::int64_t time_us, const SignalReport& report) override;
    void sound(const float* samples, std::size_t count, double rate_Hz) override;
    void step(const FollowedStep& step) override;
    void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) override;

private:
    struct Mark
    {
        std::int64_t begin_step, end_step; ///< whole steps within it
    };

    struct Piece
    {
        std::vector<float> samples;
        double rate_Hz;
    };

    std::int64_t end_step() const { return m_begin + static_cast<std::int64_t>(m_steps.size()); }
    std::int64_t steps(double duration_s) const;
    std::vector<HeardStep> turned() const;
    double laterTone_Hz(std::size_t index) const;
    bool hasEcho() const;
    void open(const FollowedStep& step);
    void close();
    void cut(std::int64_t end_step);
    void judge();
    void hearUntil(std::int64_t end_step);
    void conclude();
    void passOn(double until_s);

    double m_step_s;
    std::optional<double> m_speed_wpm;
    Parameters m_parameters;
    HeldCodes m_codes;
    Observer* m_observer;
    bool m_isLast;

    std::deque<FollowedStep> m_steps; // of the transmission, and of some seconds before m_heard
    std::int64_t m_begin = 0;         // the first of them
    double m_aside_cycles = 0.0;      // phase by which it is turned
    std::int64_t m_heard = 0;         // what came before was heard again
    std::deque<Mark> m_marks;
    double m_unit_us = 0.0;                // a dot of the last one
    std::optional<std::int64_t> m_stopped; // where the first hearing has ended
    std::deque<Piece> m_sound;             // that the observer gets when its steps come
    double m_passedOn_s = 0.0;             // of the sound
    std::unique_ptr<SignalChain> m_chain;
    std::int64_t m_opened = 0; // where that began to hear
};

} // namespace demodulator
