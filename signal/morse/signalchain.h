// SPDX-License-Identifier: MIT
// One signal, from its steps to its symbol codes: joins the stages behind the mixer and feeds what
// is decided back to those that follow tone, level and timing.
#pragma once

#include "signal/morse/classifier.h"
#include "signal/morse/marklikelihood.h"
#include "signal/morse/observer.h"
#include "signal/morse/step.h"
#include "signal/morse/timingmodel.h"
#include "signal/morse/trellis.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace demodulator {

/// What is known of a signal before its chain has heard it, or what the chain knows of it now.
struct SignalGuess
{
    double tone_Hz;
    double signal; ///< square of half the key-down amplitude, in the scale of Step::value
    double noise;  ///< variance that noise gives one step
};

/// Whoever has the sound makes the steps, one every STEP_s, without holes. A mixer may follow
/// tone_Hz() from step to step, which wanders with the signal, or stand still or move in strides:
/// Step::tone_Hz says where it was, and the chain turns the step by the difference. What is lost is
/// what the mixer's own window takes away that far off (0.7 dB at 30 Hz for a Hann window of three
/// steps). Cost and memory do not depend on how long a signal lasts. Sink and observer must outlive
/// the chain. Not for use from several threads at once.
class SignalChain
{
public:
    /// The first step pushed is step `begin_step` of the sound. Nothing reaches the sink before
    /// release().
    SignalChain(const SignalGuess& guess, double step_s, std::int64_t begin_step,
                std::optional<double> speed_wpm, SymbolSink& sink, Observer* observer = nullptr);

    /// Where the next step is expected.
    double tone_Hz() const { return m_tone_Hz; }
    /// The step after the last one pushed.
    std::int64_t end_step() const { return m_origin + m_likelihood.end(); }
    /// Variance that noise near the tone gives one step, from now on.
    void setNoise(double noise);
    /// What is pushed after the end is ignored.
    void push(const Step& step);
    /// End of the signal: what is pending is decided now.
    void finish();

    /// Far more probable keying than noise, and no steady tone.
    bool confirmed() const { return m_confirmed; }
    /// Marks of the path found so far; once confirmed, those of the last seconds.
    std::int64_t marks() const { return m_marks; }
    /// Log likelihood of its speed over all others.
    double margin() const { return m_margin; }
    /// First and last mark of the path found so far.
    std::int64_t firstMark_step() const { return m_firstMark; }
    std::int64_t lastMark_step() const { return m_lastMark; }
    /// End of the last mark that was given.
    std::int64_t lastGiven_step() const { return m_origin + m_committed; }
    /// Length of a dot at the end of the path.
    double unit_s() const { return m_unit_steps * m_stepDuration_us / 1e6; }

    /// Tone, level and noise as they are known now.
    SignalGuess heard() const;

    /// From now on the decisions go to the sink.
    void release() { m_released = true; }
    /// The transmission it was made for has ended.
    bool ended() const { return m_ended; }
    /// A tone without keying was heard in the last seconds.
    bool steady() const;

private:
    double burst(double rest);
    void review(bool last);
    void follow(const Path& path);
    void followLevel(const Path& path);
    void followTone(const Path& path);
    void followPhase(const Path& path);
    bool foreign(const Segment& segment) const;
    bool tooOld(const Segment& segment, double span_us) const;
    DecidedMark describe(const Segment& segment) const;
    void commit(const Path& path, bool last);
    std::int64_t time_us(std::int64_t step) const;

    MarkLikelihood m_likelihood;
    TimingModel m_timing;
    Trellis m_trellis;
    Classifier m_classifier;
    Observer* m_observer;

    double m_tone_Hz;
    double m_stepDuration_us;
    std::int64_t m_origin;        // step of the sound that is step 0 of the likelihood
    std::int64_t m_committed = 0; // end of the last mark given
    struct Gap
    {
        Kind kind;
        double units;
    };
    std::optional<Gap> m_pendingGap; // the gap after it, as it looked last
    std::int64_t m_firstMark = 0;
    std::int64_t m_lastMark = 0;
    std::int64_t m_learnt = 0;
    std::int64_t m_marks = 0; // of the path
    double m_margin = 0.0;
    double m_unit_steps = 15.0;
    double m_givenUnit_steps = 15.0;
    double m_weakest; // level of the weakest signal to look for
    std::int64_t m_carrierUntil = 0;
    double m_restSteps = 0.0; // that were heard
    double m_meanRest = 0.0;
    double m_usualRest = 0.0; // power beside the tone, as noise of a step
    bool m_confirmed = false;
    bool m_released = false;
    bool m_ended = false;
    std::vector<float> m_tones;   // ring: tone mixed with, by step
    std::vector<double> m_cycles; // ring: its phase
    double m_nextCycles = 0.0;
    double m_mixedAside_cycles = 0.0; // by which the mixer's phase is ahead of what was expected
};

} // namespace demodulator
