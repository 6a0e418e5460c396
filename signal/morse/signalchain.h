// SPDX-License-Identifier: MIT
// One signal, from its steps to its symbol codes: joins the stages behind the mixer and feeds what
// is decided back to those that follow tone, level and timing.
#pragma once

#include "signal/morse/burstmeter.h"
#include "signal/morse/classifier.h"
#include "signal/morse/decider.h"
#include "signal/morse/expectedtone.h"
#include "signal/morse/heardmark.h"
#include "signal/morse/marklikelihood.h"
#include "signal/morse/markmeter.h"
#include "signal/morse/morsejudge.h"
#include "signal/morse/observer.h"
#include "signal/morse/parameters.h"
#include "signal/morse/step.h"
#include "signal/morse/timingmodel.h"
#include "signal/morse/tonespread.h"
#include "signal/morse/trellis.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace demodulator {

/// What is known of a signal before its chain has heard it, or what the chain knows of it now.
struct SignalGuess
{
    double tone_Hz;
    double signal;          ///< square of half the key-down amplitude, in the scale of Step::value
    double noise;           ///< variance that noise gives one step
    ToneSpread spread = {}; ///< how unsteady the tone is
    bool hasEcho = false;   ///< that fills its gaps
};

/// A step that another chain has followed, of which everything is known now but whether it is a
/// mark.
struct KnownStep
{
    std::complex<double> value; ///< against the phase of the tone
    double tone_Hz;
    double noise;         ///< of this very step: more during a crash of static
    Level level;          ///< its dots are those of the chain that hears it
    double phase;         ///< that a mark has here
    double concentration; ///< how well that is known (von Mises), 0: not at all
};

/// The owner of the sound makes the steps, one every STEP_s, without gaps. A mixer may follow
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
                std::optional<double> speed_wpm, SymbolSink& sink, Observer* observer = nullptr,
                const Parameters& parameters = {});

    /// Where the next step is expected.
    double tone_Hz() const { return m_tone.tone_Hz(); }
    /// The step after the last one pushed.
    std::int64_t end_step() const { return m_origin + m_likelihood.end(); }
    /// Variance that noise near the tone gives one step, from now on.
    void setNoise(double noise);
    /// What is pushed after the end is ignored.
    void push(const Step& step);
    /// In place of push(): nothing is followed any more then.
    void pushKnown(const KnownStep& step);
    /// Decides what lies before the present pause, so that the next sender does not affect it.
    void settle();
    /// End of the signal: what is pending is decided now.
    void finish();

    /// Far more probable keying than noise, and no steady tone.
    bool confirmed() const { return m_state != State::Listening; }
    /// Whether what was heard of late is Morse.
    MorseJudge::Verdict verdict() const { return m_found.verdict; }
    MorseJudge::Side side() const { return m_found.side; }
    /// Marks that the verdict rests on; older ones count less.
    double judgedMarks() const { return m_found.judgedMarks; }
    /// At some time, many marks were.
    bool wasMorse() const { return m_found.wasMorse; }
    /// Marks of the path found so far; once confirmed, those of the last seconds.
    std::int64_t marks() const { return m_found.marks; }
    /// Log likelihood of its speed over all others.
    double margin() const { return m_found.margin; }
    /// First and last mark of the path found so far.
    std::int64_t firstMark_step() const { return m_found.firstMark; }
    std::int64_t lastMark_step() const { return m_found.lastMark; }
    /// End of a steady tone, or of a mark that is far longer than all others, once there are marks
    /// after it.
    std::optional<std::int64_t> endOfCarrier_step() const { return m_found.endOfCarrier; }
    /// End of the last mark that was emitted.
    std::int64_t lastEmitted_step() const { return m_origin + m_decider.emitted_step(); }
    /// Length of a dot at the end of the path.
    double unit_s() const { return m_unit_steps * m_step_s; }

    /// Tone, level and noise as they are known now.
    SignalGuess heard() const;

    /// It is known to be a signal.
    void confirm();
    /// From now on the decisions go to the sink.
    void release()
    {
        m_released = true;
        m_trellis.followAnySpeed();
    }
    /// The transmission it was made for has ended.
    bool ended() const { return m_state == State::Ended; }
    /// A tone without keying was heard in the last seconds.
    bool steady() const;

private:
    /// What becomes of a signal. From Confirmed on it is heard to its end, and once released its
    /// codes are emitted; of a signal that is never confirmed nothing is.
    enum class State {
        Listening, ///< maybe noise
        Confirmed, ///< far more probable keying than noise
        Ended,     ///< silent for so long that the transmission is over
    };

    /// What the path found last says of the signal as a whole.
    struct PathFound
    {
        std::int64_t firstMark = 0; ///< where it begins
        std::int64_t lastMark = 0;  ///< where it ends
        std::int64_t marks = 0;
        double margin = 0.0;
        MorseJudge::Verdict verdict = MorseJudge::Verdict::Unsure;
        MorseJudge::Side side = MorseJudge::Side::Unknown;
        double judgedMarks = 0.0;
        bool wasMorse = false;
        std::optional<std::int64_t> endOfCarrier;
    };

    std::int64_t steps(double duration_s) const;
    void setLevel(double signal, double noise);
    void take(std::complex<double> value, double noise);
    void review(bool last);
    double delay_s(const Level& level) const;
    void look(const Path& path, const std::vector<bool>& isForeign);
    std::optional<std::int64_t> endOfCarrier(const Path& path,
                                             const std::vector<bool>& isForeign) const;
    void lookForEcho();
    std::vector<HeardMark> heardMarks(const Path& path, const std::vector<bool>& isForeign) const;
    void judge(const Path& path, const std::vector<bool>& isForeign);
    void follow(std::vector<HeardMark> marks);

    Parameters m_parameters;
    MarkLikelihood m_likelihood;
    TimingModel m_timing;
    Trellis m_trellis;
    BurstMeter m_bursts;
    Classifier m_classifier;
    Decider m_decider;
    Observer* m_observer;

    ExpectedTone m_tone;
    MarkMeter m_meter;
    ToneSpread m_spread;
    bool m_hasEcho;
    double m_weakestMark = 0.0; // power of its steps, of those of the last seconds
    double m_step_s;
    std::int64_t m_origin; // step of the sound that is step 0 of the likelihood
    State m_state = State::Listening;
    bool m_released = false;
    bool m_isKnown = false; // level, tone and phase come with the steps
    PathFound m_found;
    // Of marks that a later path does not reach back to.
    MorseJudge m_judge;
    std::int64_t m_judged = 0; // end of the last of them
    double m_unit_steps = Level().dot_steps;
    std::int64_t m_carrierUntil = 0;
};

} // namespace demodulator
