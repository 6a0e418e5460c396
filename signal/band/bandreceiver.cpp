// SPDX-License-Identifier: MIT
// Joins the parts of the receiver for a band. All happens in batches of a quarter of a second:
// filters and spectra of the batch, then every listener goes on by itself, both on all processors;
// then, one after the other, who has come and who has gone.
#include "signal/band/bandreceiver.h"

#include "signal/band/bandmemory.h"
#include "signal/band/bandteleprinters.h"
#include "signal/band/listener.h"
#include "signal/band/shadows.h"
#include "signal/band/shiftedpairs.h"
#include "signal/band/survey.h"
#include "signal/band/workers.h"
#include "signal/limits.h"
#include "signal/samples/samples.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace demodulator {

namespace {

// What the threads share out at once: a quarter of a second, which is far less than any decision
// waits for.
constexpr std::int64_t BATCH_STEPS = 64;
constexpr std::int64_t BATCH_FRAMES = BATCH_STEPS / Survey::HOP_STEPS;
constexpr std::int64_t NOISE_BATCHES = 4; // noise is measured every second
// What is heard again, and what passes until a signal is certain.
constexpr double HISTORY_s = 9.0;
constexpr std::int64_t TELEPRINTER_BATCHES = 4; // between two searches

bool usable(double rate_Hz)
{
    return rate_Hz >= LOWEST_BAND_RATE_Hz && rate_Hz <= HIGHEST_BAND_RATE_Hz;
}

} // namespace

BandSink::~BandSink() = default;

void BandSink::teleprinterFound(int /*signal*/, const teleprinter::Line& /*line*/,
                                double /*snr_dB*/)
{
}
void BandSink::teleprinterStarted(int /*signal*/, const teleprinter::Line& /*line*/,
                                  std::int64_t /*time_us*/)
{
}
void BandSink::teleprinterCharacter(int /*signal*/, std::uint8_t /*character*/,
                                    std::int64_t /*time_us*/)
{
}
void BandSink::teleprinterStopped(int /*signal*/, const teleprinter::Line& /*line*/,
                                  std::int64_t /*time_us*/)
{
}

class BandReceiver::Private
{
public:
    Private(const BandSettings& settings, BandSink& sink)
        : m_settings(settings)
        , m_sink(sink)
        , m_workers(settings.threads)
        , m_bank(settings.format, HISTORY_s)
        , m_survey(settings.format, m_bank.stepSamples(), m_settings.parameters)
        , m_shadows(settings.format, m_survey, m_settings.parameters.shadow)
        , m_pairs(m_bank, m_survey, m_settings.parameters.pair)
        , m_before(Survey::HOP_STEPS * m_bank.stepSamples())
        , m_found(m_survey.pieces())
        , m_numbers(settings.parameters.admission)
        , m_memory(settings.parameters.signal.attention)
        , m_teleprinters(m_settings, m_bank, m_pairs, m_numbers, m_memory, m_sink)
    {
        m_settings.mostSignals = std::max<std::size_t>(1, m_settings.mostSignals);
        m_samples.assign(m_before, 0.0F); // silence before the first window
    }

    void push(const std::complex<float>* samples, std::size_t count)
    {
        const std::size_t whole =
            m_before + (static_cast<std::size_t>(BATCH_STEPS) + 1) * m_bank.stepSamples();
        while (count > 0) {
            const std::size_t piece = std::min(count, whole - m_samples.size());
            for (std::size_t n = 0; n < piece; ++n)
                m_samples.emplace_back(usableSample(samples[n].real()),
                                       usableSample(samples[n].imag()));
            samples += piece;
            count -= piece;
            if (m_samples.size() < whole)
                return;
            batch();
            const auto used = static_cast<std::ptrdiff_t>(BATCH_STEPS) *
                              static_cast<std::ptrdiff_t>(m_bank.stepSamples());
            m_samples.erase(m_samples.begin(), m_samples.begin() + used);
        }
    }

    void finish()
    {
        // Silence for the windows that reach beyond the end, and to complete a batch.
        const std::vector<std::complex<float>> silence((static_cast<std::size_t>(BATCH_STEPS) + 1) *
                                                       m_bank.stepSamples());
        push(silence.data(), silence.size());
        std::vector<Signal*> candidates;
        for (Signal& signal : m_signals) {
            if (isCandidate(signal) && signal.listener->chain()->confirmed() &&
                isMorse(*signal.listener->chain()) && isItself(signal) && !isShifted(signal))
                candidates.push_back(&signal);
            else if (isCandidate(signal))
                noticeTeleprinter(signal.listener->heard().tone_Hz,
                                  signal.listener->heard().signal);
        }
        m_workers.forAll(m_teleprinters.size(),
                         [this](std::size_t i) { m_teleprinters.finish(i, m_end); });
        handOnTeleprinters(); // what was held back for one is its own, or free
        for (Signal* const candidate : candidates) {
            if (!candidate->gone)
                admit(*candidate);
        }
        m_workers.forAll(m_signals.size(), [this](std::size_t i) {
            m_signals[i].listener->process(m_end);
            m_signals[i].listener->finish();
        });
        handOn();
        for (const int number : m_numbers.clear())
            m_sink.signalLost(number);
        m_teleprinters.clear();
        m_signals.clear();
    }

    std::vector<BandSignal> signals() const
    {
        std::vector<BandSignal> list;
        for (const Signal& signal : m_signals) {
            if (signal.number && !signal.gone)
                list.push_back({signal.number, signal.listener->tone_Hz(),
                                speedOf_wpm(signal.listener->chain()->unit_s()),
                                signal.listener->snr_dB()});
        }
        const std::vector<BandSignal> teleprinters = m_teleprinters.signals();
        list.insert(list.end(), teleprinters.begin(), teleprinters.end());
        std::sort(list.begin(), list.end(),
                  [](const BandSignal& a, const BandSignal& b) { return a.tone_Hz < b.tone_Hz; });
        return list;
    }
    std::size_t dropped() const { return m_dropped; }

private:
    struct Signal
    {
        std::unique_ptr<Listener> listener; // a candidate's is not released
        int number = 0;                     // 0: nothing was emitted of it yet
        std::int64_t noticed = 0;           // step at which it was
        double noticedLevel = 0.0;          // what it looked like then
        bool gone = false;
    };
    const AttentionParameters& attention() const { return m_settings.parameters.signal.attention; }
    const AdmissionParameters& admission() const { return m_settings.parameters.admission; }
    const TeleprinterParameters& teleprinterParameters() const
    {
        return m_settings.parameters.teleprinter;
    }

    std::int64_t stepsIn(double duration_s) const
    {
        return static_cast<std::int64_t>(duration_s / m_bank.step_s());
    }
    std::int64_t framesIn(std::int64_t steps) const { return steps / Survey::HOP_STEPS; }

    void batch()
    {
        const std::int64_t firstStep = m_end;
        const std::int64_t firstFrame = framesIn(m_end);
        const std::size_t step = m_bank.stepSamples();
        const std::size_t halfStep = m_bank.windowSamples() / 2;
        m_workers.forAll(BATCH_STEPS + BATCH_FRAMES, [&](std::size_t i) {
            if (i < static_cast<std::size_t>(BATCH_FRAMES)) {
                m_survey.compute(firstFrame + static_cast<std::int64_t>(i),
                                 &m_samples[i * step * Survey::HOP_STEPS]);
                return;
            }
            i -= static_cast<std::size_t>(BATCH_FRAMES);
            m_bank.compute(firstStep + static_cast<std::int64_t>(i),
                           &m_samples[m_before + i * step - halfStep]);
        });
        m_end += BATCH_STEPS;
        m_survey.advanceTo(framesIn(m_end));
        ++m_batches;
        // What is usual is measured soon after the begin, then every second; what is new, always.
        const bool usual = m_batches <= 2 * NOISE_BATCHES || m_batches % NOISE_BATCHES == 0;
        m_workers.forAll(m_survey.pieces(),
                         [&](std::size_t piece) { m_survey.measureNoise(piece, usual); });
        m_workers.forAll(m_signals.size() + m_teleprinters.size(), [this](std::size_t i) {
            if (i < m_signals.size())
                m_signals[i].listener->process(m_end);
            else
                m_teleprinters.process(i - m_signals.size(), m_end);
        });
        handOn();
        m_workers.forAll(m_survey.pieces(), [this](std::size_t piece) {
            m_found[piece] = m_survey.find(piece, m_settings.parameters.survey.search_frames);
        });
        manage();
    }

    // What the listeners gave goes to the sink, signal by signal.
    void handOn()
    {
        std::vector<Signal> successors;
        for (Signal& signal : m_signals) {
            if (!signal.listener->released() || !signal.listener->chain())
                continue;
            for (const BandEvent& event : signal.listener->takeEvents())
                give(signal, event);
            if (signal.number)
                m_numbers.heard(signal.number, signal.listener->tone_Hz(), m_end);
            if (!signal.listener->ended())
                continue;
            signal.gone = true;
            if (const auto& next = signal.listener->successor()) {
                if (!isTaken(next->guess.tone_Hz) &&
                    !m_teleprinters.isOwn(next->guess.tone_Hz, next->guess.signal))
                    successors.push_back(successorOf(*next));
            } else if (signal.number)
                m_memory.close(signal.listener->tone_Hz(), signal.listener->lastEmitted_step() +
                                                               stepsIn(attention().afterLast_s));
        }
        handOnTeleprinters();
        sweep();
        std::move(successors.begin(), successors.end(), std::back_inserter(m_signals));
    }

    void give(Signal& signal, const BandEvent& event)
    {
        const double tone_Hz = signal.listener->tone_Hz();
        switch (event.kind) {
        case BandEvent::Kind::Started:
            if (!signal.number)
                signal.number = numberFor(tone_Hz, signal.listener->snr_dB());
            m_sink.transmissionStarted(signal.number, tone_Hz, event.time_us);
            break;
        case BandEvent::Kind::Symbol:
            m_sink.symbol(signal.number, event.code, event.time_us);
            break;
        case BandEvent::Kind::Stopped:
            m_sink.transmissionStopped(signal.number, event.time_us, event.report);
            break;
        }
    }

    void handOnTeleprinters()
    {
        m_teleprinters.handOn(m_end, [this](const BandTeleprinters::IsOf& isOf) {
            for (Signal& signal : m_signals) {
                if (signal.gone || !isOf(signal.listener->tone_Hz(), signal.noticedLevel))
                    continue;
                if (isHeard(signal))
                    signal.listener->finish();
                else
                    signal.gone = true;
            }
        });
    }

    // By a listener that was promoted meanwhile.
    bool isTaken(double tone_Hz) const
    {
        return std::any_of(m_signals.begin(), m_signals.end(), [&](const Signal& signal) {
            return !signal.gone && signal.listener->released() && !signal.listener->ended() &&
                   std::fabs(signal.listener->tone_Hz() - tone_Hz) < attention().otherTone_Hz;
        });
    }

    Signal successorOf(const Successor& next)
    {
        Signal signal;
        signal.listener =
            std::make_unique<Listener>(m_bank, m_survey, m_settings.parameters, next.guess,
                                       std::max(next.begin_step, oldestStep()));
        signal.listener->release();
        signal.noticed = m_end;
        signal.noticedLevel = next.guess.signal;
        return signal;
    }

    void sweep()
    {
        m_signals.erase(std::remove_if(m_signals.begin(), m_signals.end(),
                                       [](const Signal& signal) { return signal.gone; }),
                        m_signals.end());
    }

    // ---- who has come and who has gone ----

    void manage()
    {
        forgetOld();
        for (Signal& signal : m_signals)
            judge(signal);
        handOn(); // of those that had to give way
        searchNewSignals();
        searchTeleprinters();
        searchAnswers();
    }

    void forgetOld()
    {
        m_memory.forget(m_end - m_bank.keptSteps(), m_end);
        m_teleprinters.forget(m_end);
        for (const int number : m_numbers.forget(m_end - stepsIn(admission().remembered_s)))
            m_sink.signalLost(number);
    }

    // Before so much has been heard that the begin is not kept any more.
    void searchTeleprinters()
    {
        if (m_batches % TELEPRINTER_BATCHES != 0)
            return;
        const std::size_t count =
            std::min<std::size_t>(m_tones.size(), teleprinterParameters().mostTones);
        for (std::size_t i = 0; i < count; ++i)
            noticeTeleprinter(m_tones[i].tone_Hz, m_tones[i].signal);
    }

    void noticeTeleprinter(double tone_Hz, double level)
    {
        if (m_teleprinters.mayBegin(tone_Hz, level))
            m_teleprinters.notice(tone_Hz, m_tones, m_end, oldestStep());
    }

    static bool isCandidate(const Signal& signal)
    {
        return !signal.gone && !signal.listener->released() && signal.listener->chain();
    }
    // Released and heard, so that others have to respect it.
    static bool isHeard(const Signal& signal)
    {
        return !signal.gone && signal.listener->released() && signal.listener->chain() &&
               !signal.listener->ended();
    }

    void judge(Signal& signal)
    {
        if (signal.gone || !signal.listener->chain())
            return;
        const SignalChain& chain = *signal.listener->chain();
        if (!chain.confirmed()) {
            if (m_end - signal.noticed > stepsIn(attention().candidateLife_s))
                refuse(signal);
        } else if (isCandidate(signal) && heardEnough(chain) &&
                   !m_teleprinters.isOwn(signal.listener->tone_Hz(), signal.noticedLevel)) {
            if (!isMorse(chain) || isBurst(chain) || !isItself(signal) ||
                signal.listener->snr_dB() < m_settings.leastSnr_dB) {
                refuse(signal);
                return;
            }
            const auto pair = pairOf(signal); // last, since it takes longest
            if (pair && pair->isSure)
                refuse(signal);
            else if (!pair || hasWaited(chain))
                admit(signal);
        }
    }

    // Key clicks of a strong signal look like dots, so dots alone do not count.
    static bool isMorse(const SignalChain& chain)
    {
        return chain.verdict() == MorseJudge::Verdict::Morse ||
               chain.verdict() == MorseJudge::Verdict::Dashes;
    }

    // Almost anything looks like very quick keying for a moment.
    bool isBurst(const SignalChain& chain) const
    {
        return chain.unit_s() < attention().quickUnit_s && chain.marks() < attention().quick_marks;
    }

    void refuse(Signal& signal)
    {
        noticeTeleprinter(signal.listener->heard().tone_Hz, signal.listener->heard().signal);
        signal.gone = true;
        m_memory.refuse(signal.listener->tone_Hz(),
                        std::max(signal.noticedLevel, signal.listener->heard().signal),
                        m_end + stepsIn(admission().refusedFor_s));
    }

    std::optional<ShiftedPair> pairOf(const Signal& signal) const
    {
        return m_pairs.find(signal.listener->heard().tone_Hz, m_end);
    }

    bool isShifted(const Signal& signal) const
    {
        const auto pair = pairOf(signal);
        return pair && pair->isSure;
    }

    // As long as a signal may have to wait until it is decided.
    bool hasWaited(const SignalChain& chain) const
    {
        return m_end - chain.firstMark_step() > stepsIn(attention().heardFirstAtMost_s);
    }

    bool heardEnough(const SignalChain& chain) const
    {
        const std::int64_t heard = m_end - chain.firstMark_step();
        const std::int64_t marks = chain.marks();
        const bool sure = heard > stepsIn(attention().sureAfter_s) &&
                          marks >= attention().sureAfter_marks &&
                          chain.margin() > attention().sureMargin;
        if (hasWaited(chain))
            return true;
        return !isBurst(chain) && (sure || (heard > stepsIn(attention().heardFirst_s) &&
                                            marks >= attention().heardFirst_marks));
    }

    // Somebody who is known already may send there as well. Who was silent since before gives way;
    // who went on afterwards leaves what lies between; what ended meanwhile was emitted already.
    void admit(Signal& candidate)
    {
        const std::int64_t first = candidate.listener->chain()->firstMark_step();
        if (candidate.listener->chain()->lastMark_step() <=
            m_memory.heardUntil(candidate.listener->tone_Hz())) {
            candidate.gone = true;
            return;
        }
        std::int64_t until = INT64_MAX;
        for (const Signal& other : m_signals) {
            const bool isNew = other.listener->released() && !other.listener->chain();
            if (isNew && !other.gone && distance_Hz(other, candidate) < attention().otherTone_Hz)
                return; // what it hears is not known yet
            if (!isHeard(other) || distance_Hz(other, candidate) > attention().otherTone_Hz ||
                other.listener->chain()->lastMark_step() < first)
                continue;
            const auto resumed = other.listener->firstMarkAfter(first);
            if (!resumed || *resumed - first < stepsIn(admission().leastOver_s)) {
                candidate.gone = true;
                return;
            }
            until = std::min(until, *resumed - stepsIn(admission().beforeResumed_s));
        }
        if (makeRoom(candidate))
            promote(candidate, until);
        else
            refuse(candidate);
    }

    static double distance_Hz(const Signal& a, const Signal& b)
    {
        return std::fabs(a.listener->tone_Hz() - b.listener->tone_Hz());
    }

    bool makeRoom(const Signal& candidate)
    {
        std::size_t count = 0;
        Signal* weakest = nullptr;
        for (Signal& other : m_signals) {
            if (other.gone || !other.listener->released() || other.listener->ended())
                continue;
            ++count;
            if (!weakest || other.listener->heard().signal < weakest->listener->heard().signal)
                weakest = &other;
        }
        if (!weakest || count < m_settings.mostSignals)
            return true;
        ++m_dropped;
        if (weakest->listener->heard().signal >= candidate.listener->heard().signal)
            return false;
        weakest->listener->finish();
        weakest->gone = !weakest->listener->chain();
        return true;
    }

    // By now tone and level are known far better than when the candidate was noticed, so that its
    // signal is heard a second time from its beginning.
    void promote(Signal& candidate, std::int64_t until)
    {
        for (Signal& other : m_signals) {
            if (isHeard(other) && distance_Hz(other, candidate) < attention().otherTone_Hz &&
                until == INT64_MAX)
                other.listener->finish();
        }
        const std::int64_t begin = std::max(
            {candidate.listener->begin_step(), oldestStep(),
             m_memory.heardUntil(candidate.listener->tone_Hz()),
             candidate.listener->chain()->firstMark_step() - stepsIn(attention().beforeFirst_s)});
        candidate.listener = std::make_unique<Listener>(m_bank, m_survey, m_settings.parameters,
                                                        candidate.listener->heard(), begin, until);
        candidate.listener->release();
        candidate.noticed = m_end;
    }

    int numberFor(double tone_Hz, double snr_dB)
    {
        const int former = m_numbers.find(tone_Hz, [this](int number) { return isBusy(number); });
        if (former)
            return former;
        const int number = m_numbers.add(tone_Hz, m_end);
        m_sink.signalFound(number, tone_Hz, snr_dB);
        return number;
    }

    bool isBusy(int number) const
    {
        return std::any_of(
                   m_signals.begin(), m_signals.end(),
                   [&](const Signal& signal) { return signal.number == number && !signal.gone; }) ||
               m_teleprinters.hasNumber(number);
    }

    std::int64_t oldestStep() const
    {
        return std::max<std::int64_t>(0, m_end + BATCH_STEPS - m_bank.keptSteps() + 1);
    }

    // Up to where what was sent there has been emitted.
    std::int64_t heardUntil(double tone_Hz) const
    {
        std::int64_t until = m_memory.heardUntil(tone_Hz);
        for (const Signal& signal : m_signals) {
            if (isHeard(signal) &&
                std::fabs(signal.listener->tone_Hz() - tone_Hz) < attention().otherTone_Hz)
                until = std::max(until, signal.listener->chain()->lastMark_step() +
                                            stepsIn(attention().afterLast_s));
        }
        return until;
    }

    void searchNewSignals()
    {
        m_tones.clear();
        for (const std::vector<KeyedTone>& found : m_found)
            m_tones.insert(m_tones.end(), found.begin(), found.end());
        // The strongest first: others may be but their shadows.
        std::stable_sort(
            m_tones.begin(), m_tones.end(),
            [](const KeyedTone& a, const KeyedTone& b) { return a.signal > b.signal; });
        for (const KeyedTone& tone : m_tones) {
            if (tone.tone_Hz < m_settings.lowest_Hz || tone.tone_Hz > m_settings.highest_Hz ||
                known(tone) || m_memory.isRefused(tone.tone_Hz, tone.signal) ||
                m_teleprinters.isOwn(tone.tone_Hz, tone.signal) ||
                !standsOut({tone.tone_Hz, tone.signal, tone.noise}, nullptr))
                continue;
            notice(tone, std::max({heardUntil(tone.tone_Hz),
                                   m_end - stepsIn(attention().heardAgain_s), oldestStep()}));
        }
    }

    // A listener is there already. One that began before the signal was as strong as it is now
    // begins again.
    bool known(const KeyedTone& tone)
    {
        for (Signal& signal : m_signals) {
            if (signal.gone)
                continue;
            const bool released = signal.listener->released();
            if (std::fabs(signal.listener->tone_Hz() - tone.tone_Hz) <
                (released ? attention().otherTone_Hz : attention().sameTone_Hz)) {
                const bool confirmed =
                    released || (signal.listener->chain() && signal.listener->chain()->confirmed());
                if (confirmed || tone.signal < attention().louderCandidate * signal.noticedLevel)
                    return true;
                signal.gone = true;
            }
        }
        return false;
    }

    void notice(const KeyedTone& tone, std::int64_t begin)
    {
        const auto candidates = static_cast<std::size_t>(
            std::count_if(m_signals.begin(), m_signals.end(),
                          [](const Signal& signal) { return !signal.listener->released(); }));
        const auto most =
            admission().leastCandidates +
            admission().candidatesPerSignal * static_cast<double>(m_signals.size() - candidates);
        if (static_cast<double>(candidates) > most)
            return;
        Signal signal;
        signal.listener =
            std::make_unique<Listener>(m_bank, m_survey, m_settings.parameters,
                                       SignalGuess{tone.tone_Hz, tone.signal, tone.noise}, begin);
        signal.noticed = m_end;
        signal.noticedLevel = tone.signal;
        m_signals.push_back(std::move(signal));
    }

    // Somebody else on the frequency of a signal that is silent.
    void searchAnswers()
    {
        const std::size_t count = m_signals.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (!isHeard(m_signals[i]))
                continue;
            const Listener& listener = *m_signals[i].listener;
            const SignalChain& chain = *listener.chain();
            const std::int64_t silence = m_end - chain.lastMark_step();
            const double least_s = std::max(admission().answerSilence_s,
                                            admission().answerSilence_units * chain.unit_s());
            if (silence < stepsIn(least_s))
                continue;
            // The first spectrum without the last mark.
            const std::int64_t frames = framesIn(silence) - 2;
            const auto found = m_survey.findNear(
                listener.tone_Hz(), admission().answerReach_Hz,
                std::min<std::int64_t>(frames, m_settings.parameters.survey.search_frames));
            if (!found)
                continue;
            const bool itself =
                std::fabs(found->tone_Hz - listener.tone_Hz()) < attention().ownTone_Hz &&
                found->signal * admission().answerLevel > listener.heard().signal;
            if (itself || candidateNear(*found) ||
                m_memory.isRefused(found->tone_Hz, found->signal) || takenByOther(*found, listener))
                continue;
            notice(*found, std::max(heardUntil(found->tone_Hz), oldestStep()));
        }
    }

    bool candidateNear(const KeyedTone& tone)
    {
        for (Signal& signal : m_signals) {
            if (signal.listener->released() || signal.gone ||
                std::fabs(signal.listener->tone_Hz() - tone.tone_Hz) > attention().sameTone_Hz)
                continue;
            const bool confirmed =
                signal.listener->chain() && signal.listener->chain()->confirmed();
            if (confirmed || tone.signal < attention().louderCandidate * signal.noticedLevel)
                return true;
            signal.gone = true;
        }
        return false;
    }

    bool takenByOther(const KeyedTone& tone, const Listener& silent) const
    {
        return std::any_of(m_signals.begin(), m_signals.end(), [&](const Signal& signal) {
            return isHeard(signal) && signal.listener.get() != &silent &&
                   std::fabs(signal.listener->tone_Hz() - tone.tone_Hz) < attention().otherTone_Hz;
        });
    }

    bool standsOut(const SignalGuess& tone, const Listener* own) const
    {
        std::vector<const Listener*> others;
        for (const Signal& signal : m_signals) {
            if (!signal.gone && signal.listener.get() != own)
                others.push_back(signal.listener.get());
        }
        return m_shadows.standsOut(tone, others);
    }

    // Keyed, and by a hand of its own.
    bool isItself(const Signal& candidate) const
    {
        const SignalGuess heard = candidate.listener->heard();
        double strongest = m_tones.empty() ? 0.0 : m_tones.front().signal;
        for (const Signal& other : m_signals) {
            if (isHeard(other))
                strongest = std::max(strongest, other.listener->heard().signal);
        }
        return heard.signal > admission().leastOfStrongest * strongest &&
               standsOut(heard, candidate.listener.get());
    }

    BandSettings m_settings;
    BandSink& m_sink;
    Workers m_workers;
    StepBank m_bank;
    Survey m_survey;
    Shadows m_shadows;
    ShiftedPairs m_pairs;
    std::size_t m_before; // samples that a window reaches back from its batch
    std::vector<std::complex<float>> m_samples;
    std::int64_t m_end = 0; // steps computed
    std::int64_t m_batches = 0;
    std::vector<std::vector<KeyedTone>> m_found; // by piece of the survey
    std::vector<KeyedTone> m_tones;              // all of them, the strongest first
    std::vector<Signal> m_signals;
    StationNumbers m_numbers;
    ToneMemory m_memory;
    BandTeleprinters m_teleprinters;
    std::size_t m_dropped = 0;
};

BandReceiver::BandReceiver(const BandSettings& settings, BandSink& sink)
{
    if (usable(settings.format.rate_Hz))
        m_d = std::make_unique<Private>(settings, sink);
}

BandReceiver::~BandReceiver() = default;

void BandReceiver::push(const std::complex<float>* samples, std::size_t count)
{
    if (m_d)
        m_d->push(samples, count);
}

void BandReceiver::finish()
{
    if (!m_d)
        return;
    m_d->finish();
    m_d.reset();
}

std::vector<BandSignal> BandReceiver::signals() const
{
    return m_d ? m_d->signals() : std::vector<BandSignal>();
}

std::size_t BandReceiver::dropped() const
{
    return m_d ? m_d->dropped() : 0;
}

} // namespace demodulator
