// SPDX-License-Identifier: MIT
// One signal, from its tone to its symbol codes: joins the stages behind the tone finder and feeds
// what is decided back to those that follow tone, level and timing.
#pragma once

#include "signal/morse/baseband.h"
#include "signal/morse/classifier.h"
#include "signal/morse/marklikelihood.h"
#include "signal/morse/timingmodel.h"
#include "signal/morse/tonefinder.h"
#include "signal/morse/trellis.h"

#include <optional>

namespace demodulator {

class Channel
{
public:
    /// Listens on the candidate's tone from `begin_sample` of the history on. Nothing reaches the
    /// sink before release().
    Channel(const ToneCandidate& candidate, double rate_Hz, std::int64_t begin_sample,
            std::optional<double> speed_wpm, SymbolSink& sink, Witness* witness = nullptr);

    /// Noise power of one sample near the tone, from now on.
    void setNoise(double noise);
    /// Goes on to the end of the history.
    void process(const SampleHistory& history);
    /// End of the signal: what is pending is decided now.
    void finish();

    /// Far more probable keying than noise, and no steady tone.
    bool confirmed() const { return m_confirmed; }
    /// Marks of the path found so far; once confirmed, those of the last seconds.
    std::int64_t marks() const { return m_marks; }
    /// Log likelihood of its speed over all others.
    double margin() const { return m_margin; }
    /// First and last mark of the path found so far, as samples of the history.
    std::int64_t firstMark_sample() const { return m_firstMark * m_baseband.stepSamples(); }
    std::int64_t lastMark_sample() const { return m_lastMark * m_baseband.stepSamples(); }
    /// End of the last mark that was given.
    std::int64_t lastGiven_sample() const
    {
        return (m_origin + m_committed) * m_baseband.stepSamples();
    }
    /// Length of a dot at the end of the path.
    double unit_s() const { return m_unit_steps * m_stepDuration_us / 1e6; }
    double tone_Hz() const { return m_baseband.tone_Hz(); }

    /// Tone, level and noise as they are known now.
    ToneCandidate heard() const;

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
    void commit(const Path& path, bool last);
    std::int64_t time_us(std::int64_t step) const;

    Baseband m_baseband;
    MarkLikelihood m_likelihood;
    TimingModel m_timing;
    Trellis m_trellis;
    Classifier m_classifier;
    Witness* m_witness;

    double m_stepDuration_us;
    std::int64_t m_origin;        // baseband step of step 0 of the likelihood
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
};

} // namespace demodulator
