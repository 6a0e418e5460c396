// SPDX-License-Identifier: MIT
// Joins the stages: looks for a tone, opens a channel on it that hears the last seconds again, and
// lets the channel speak once it is sure of a signal.
#include "signal/morse/demodulator.h"

#include "signal/limits.h"
#include "signal/morse/baseband.h"
#include "signal/morse/follower.h"
#include "signal/morse/observer.h"
#include "signal/morse/refusedtones.h"
#include "signal/morse/rehearing.h"
#include "signal/morse/signalchain.h"
#include "signal/morse/tonefinder.h"
#include "signal/samples/samples.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace demodulator {

namespace {

// Of the samples from which a signal that is found late is read.
constexpr double HISTORY_s = 8.0;

std::int64_t hopsOf(double period_s)
{
    return std::max<std::int64_t>(1, std::llround(period_s / HOP_s));
}

bool usable(double rate_Hz)
{
    return rate_Hz >= LOWEST_RATE_Hz && rate_Hz <= HIGHEST_RATE_Hz;
}

// What is set out of bounds counts as not set.
Settings bounded(Settings settings)
{
    const auto limit = [](std::optional<double>& value, double least, double most) {
        if (value && !(*value >= least && *value <= most))
            value.reset();
    };
    limit(settings.tone_Hz, LOWEST_SET_TONE_Hz, HIGHEST_SET_TONE_Hz);
    limit(settings.speed_wpm, LOWEST_SET_SPEED_wpm, HIGHEST_SET_SPEED_wpm);
    return settings;
}

// What hears a recording after the first hearing, one behind the other. Live there is none.
class Rehearings
{
public:
    Rehearings(const Settings& settings, double step_s, SymbolSink& sink, Observer* observer)
        : m_sink(&sink)
        , m_observer(observer)
    {
        for (int i = 0; !settings.isLive && i < settings.parameters.rehearing.times; ++i) {
            m_all.push_back(std::make_unique<Rehearing>(
                step_s, settings.speed_wpm, settings.parameters, *m_sink, m_observer, i == 0));
            m_sink = m_all.back().get();
            m_observer = m_all.back().get();
        }
    }

    // Those of the first hearing.
    SymbolSink& sink() const { return *m_sink; }
    Observer* observer() const { return m_observer; }

    void finish()
    {
        for (auto each = m_all.rbegin(); each != m_all.rend(); ++each)
            (*each)->finish();
    }

private:
    std::vector<std::unique_ptr<Rehearing>> m_all; // the last one first
    SymbolSink* m_sink;
    Observer* m_observer;
};

} // namespace

class Demodulator::Private
{
public:
    Private(const Settings& settings, SymbolSink& sink, Observer* observer)
        : m_settings(bounded(settings))
        , m_decimator(settings.sampleRate_Hz)
        , m_rate_Hz(m_decimator.outputRate_Hz())
        , m_rehearings(m_settings, Baseband::stepSamplesAt(m_rate_Hz) / m_rate_Hz, sink, observer)
        , m_sink(m_rehearings.sink())
        , m_observer(m_rehearings.observer())
        , m_history(static_cast<std::size_t>(HISTORY_s * m_rate_Hz))
        , m_finder(m_rate_Hz, settings.parameters.finder)
        , m_frame(m_finder.frameLength())
    {
    }

    void push(const float* samples, std::size_t count)
    {
        // In pieces of at most a hop, so that a long push needs no more memory than a short one.
        const std::size_t most = m_finder.hop() * static_cast<std::size_t>(m_decimator.factor());
        while (count > 0) {
            const std::size_t piece = std::min(count, most);
            m_decimator.push(samples, piece, m_waiting);
            consume();
            samples += piece;
            count -= piece;
        }
    }

    void finish()
    {
        m_decimator.flush(m_waiting);
        // Silence for the windows that reach beyond the end.
        m_waiting.insert(m_waiting.end(), m_finder.frameLength(), 0.0F);
        consume();
        if (!m_active)
            search(2.0 * HISTORY_s); // whatever the age of the candidate
        dropWhatIsNoMorse();
        promoteIf(&Private::isEnoughAtTheEnd);
        if (m_active)
            m_active->chain().finish();
        m_rehearings.finish();
    }

private:
    const AttentionParameters& attention() const { return m_settings.parameters.attention; }
    std::int64_t samplesIn(double duration_s) const
    {
        return static_cast<std::int64_t>(duration_s * m_rate_Hz);
    }
    std::int64_t framesIn(double duration_s) const
    {
        return samplesIn(duration_s) / static_cast<std::int64_t>(m_finder.hop());
    }

    // Noise of one sample to that of one step.
    double ofStep(double noise) const { return noise / Baseband::stepSamplesAt(m_rate_Hz); }
    SignalGuess guess(const ToneCandidate& found) const
    {
        return {found.tone_Hz, found.level, ofStep(found.noise)};
    }

    // One that has heard all that the history holds from a sample on.
    std::unique_ptr<Follower> follow(const SignalGuess& signal, std::int64_t begin_sample,
                                     Observer* observer = nullptr) const
    {
        auto follower =
            std::make_unique<Follower>(signal, m_rate_Hz, begin_sample, m_settings.speed_wpm,
                                       m_settings.parameters, m_sink, observer);
        follower->process(m_history, m_finder);
        return follower;
    }

    // Everything happens at whole hops of the signal, however the input is cut.
    void consume()
    {
        std::size_t used = 0;
        for (; used + m_finder.hop() <= m_waiting.size(); used += m_finder.hop()) {
            m_history.push(m_waiting.data() + used, m_finder.hop());
            if (m_observer)
                m_observer->sound(m_waiting.data() + used, m_finder.hop(), m_rate_Hz);
            hop();
        }
        m_waiting.erase(m_waiting.begin(), m_waiting.begin() + static_cast<std::ptrdiff_t>(used));
    }

    void hop()
    {
        m_history.copy(m_history.end() - static_cast<std::int64_t>(m_frame.size()), m_frame.size(),
                       m_frame.data());
        m_finder.push(m_frame.data());
        if (m_active) {
            m_active->process(m_history, m_finder);
            if (m_active->chain().ended()) {
                m_heardUntil = m_active->lastEmitted_sample() + samplesIn(attention().afterLast_s);
                m_active.reset();
            }
        }
        if (m_candidate) {
            m_candidate->process(m_history, m_finder);
            if (!m_candidate->chain().confirmed() && m_candidate->chain().steady())
                hearsAfterCarrier();
        }
        if (m_finder.frames() % hopsOf(attention().searchEvery_s) == 0) {
            if (m_active)
                m_active->chain().setNoise(ofStep(noiseFor(m_active->chain())));
            search(attention().candidateLife_s);
        }
        dropWhatIsNoMorse();
        if (m_active && m_finder.frames() % hopsOf(attention().compareEvery_s) == 0)
            yieldToStronger();
        promoteIf(&Private::isHeardEnough);
    }

    // What fills the gaps of keying is noise as well, a harmonic of hum say.
    double noiseFor(const SignalChain& chain) const
    {
        const std::int64_t frames = framesIn(attention().noiseSpan_s);
        const double beside = m_finder.noiseNear(chain.tone_Hz(), frames);
        return chain.steady() ? beside
                              : std::max(beside, m_finder.noiseInGaps(chain.tone_Hz(), frames));
    }

    bool isHeardEnough(const Follower& follower) const
    {
        using Verdict = MorseJudge::Verdict;
        const SignalChain& chain = follower.chain();
        const Verdict verdict = chain.verdict();
        const std::int64_t heard = m_history.end() - follower.firstMark_sample();
        const std::int64_t marks = chain.marks();
        if (chain.unit_s() < attention().quickUnit_s && marks < attention().quick_marks)
            return false;
        const bool isLong = heard > samplesIn(attention().heardFirstAtMost_s);
        if (verdict != Verdict::Morse)
            return isLong && verdict == Verdict::Dashes;
        const bool surveyed = m_finder.frames() > framesIn(attention().search_s);
        const bool isSure = surveyed && heard > samplesIn(attention().sureAfter_s) &&
                            marks >= attention().sureAfter_marks &&
                            chain.margin() > attention().sureMargin;
        if (!isLong && !isSure &&
            (heard <= samplesIn(attention().heardFirst_s) || marks < attention().heardFirst_marks))
            return false;
        // Of two tones in turn either looks like Morse until a gap between words is heard.
        return chain.side() != MorseJudge::Side::Unknown || !hasComplement(follower);
    }

    // At the end of the input, what was sent last may be short.
    bool isEnoughAtTheEnd(const Follower& follower) const
    {
        return follower.chain().verdict() == MorseJudge::Verdict::Morse ||
               follower.chain().marks() < attention().loneMarks;
    }

    bool takesOver() const
    {
        return !m_active || m_candidate->firstMark_sample() > m_active->lastMark_sample();
    }

    // The signal of the candidate, heard a second time from its beginning: by now tone and level
    // are known far better than when it was noticed.
    std::unique_ptr<Follower> candidateAgain(std::int64_t since, Observer* observer) const
    {
        const std::int64_t begin =
            std::max({m_candidateSince, since,
                      m_candidate->firstMark_sample() - samplesIn(attention().beforeFirst_s)});
        return follow(m_candidate->chain().heard(), begin, observer);
    }

    // Where noise sets in, its edge looks keyed while its level is a guess: what is no signal when
    // it is heard again stays a candidate.
    void promoteIf(bool (Private::*isEnough)(const Follower&) const)
    {
        if (!m_candidate || !m_candidate->chain().confirmed() || !takesOver() ||
            !(this->*isEnough)(*m_candidate))
            return;
        auto again = candidateAgain(m_active ? m_active->lastMark_sample() : m_heardUntil, nullptr);
        if (again->chain().confirmed() && (this->*isEnough)(*again))
            promote();
        else
            m_candidate = std::move(again);
    }

    void promote()
    {
        if (m_active) {
            m_active->chain().finish();
            m_heardUntil = m_active->lastEmitted_sample();
        }
        m_active = candidateAgain(m_heardUntil, m_observer);
        m_candidate.reset();
        m_active->chain().release();
    }

    // What was heard first may be the weaker of two. Who took over and fell silent at once is soon
    // the weaker one as well.
    void yieldToStronger()
    {
        const std::int64_t now = m_history.end();
        const std::int64_t span =
            std::min(now - m_active->firstMark_sample(), samplesIn(attention().mostCompared_s));
        if (span < samplesIn(attention().leastCompared_s))
            return;
        const std::int64_t frames = span / static_cast<std::int64_t>(m_finder.hop());
        const auto found = findTone(frames);
        if (!found ||
            std::fabs(m_active->chain().tone_Hz() - found->tone_Hz) < attention().otherTone_Hz ||
            m_finder.power(found->tone_Hz, 0, frames) <
                attention().strongerPower * m_finder.power(m_active->chain().tone_Hz(), 0, frames))
            return;
        auto rival = follow(guess(*found), now - span);
        if (!rival->chain().confirmed() || rival->chain().verdict() != MorseJudge::Verdict::Morse ||
            isOneOfSeveral(*rival) || m_finder.hasComplement(found->tone_Hz, frames))
            return;
        m_candidate = std::move(rival);
        m_candidateSince = now - span;
        promote();
    }

    // Who holds the key down to tune, and sends then, is heard from there on.
    bool hearsAfterCarrier()
    {
        const std::optional<std::int64_t> end = m_candidate->endOfCarrier_sample();
        if (!end)
            return false;
        m_candidateSince = std::max(*end + samplesIn(attention().afterLast_s), m_history.begin());
        m_candidate = follow(m_candidate->chain().heard(), m_candidateSince);
        m_candidateBegin = m_history.end();
        return true;
    }

    // What is no Morse is left alone for a while, so that something else can be heard. Lengths say
    // the more, the more of them were heard.
    void refuse(const SignalChain& chain, bool isOneOfSeveral)
    {
        const double refused_s = isOneOfSeveral
                                     ? attention().refused_s
                                     : std::min(attention().refused_s,
                                                attention().refusedPerMark_s * chain.judgedMarks());
        m_refused.add(chain.tone_Hz(), m_history.end() + samplesIn(refused_s));
    }

    // Two tones in turn at a teleprinter's rate, or the space of keying by two tones, or one of
    // more than two.
    bool isOneOfSeveral(const Follower& follower) const
    {
        if (m_finder.frames() % hopsOf(attention().searchEvery_s) != 0)
            return false;
        const SignalChain& chain = follower.chain();
        if (hasComplement(follower))
            return chain.unit_s() < attention().teleprinterUnit_s ||
                   chain.side() == MorseJudge::Side::Space;
        const std::int64_t frames = comparedFrames(follower);
        return frames > 0 && m_finder.takesTurns(chain.tone_Hz(), frames);
    }

    bool hasComplement(const Follower& follower) const
    {
        const std::int64_t frames = comparedFrames(follower);
        return frames > 0 && m_finder.hasComplement(follower.chain().tone_Hz(), frames);
    }

    // Over which tones can be seen to take turns, 0 when they are too few: noise that fell just
    // when the signal began is no tone in turn with it, and of few frames chance makes anything.
    std::int64_t comparedFrames(const Follower& follower) const
    {
        const std::int64_t heard = (m_history.end() - follower.firstMark_sample()) /
                                   static_cast<std::int64_t>(m_finder.hop());
        const std::int64_t frames = std::min(framesIn(attention().search_s), heard - 2);
        return frames < framesIn(attention().compared_s) ? 0 : frames;
    }

    void dropWhatIsNoMorse()
    {
        const std::int64_t now = m_history.end();
        m_refused.update(now);
        if (m_active) {
            const SignalChain& chain = m_active->chain();
            const bool isOne = isOneOfSeveral(*m_active);
            if (isOne || chain.verdict() == MorseJudge::Verdict::Other) {
                m_active->chain().finish();
                m_heardUntil = m_active->lastEmitted_sample();
                // Another station that came into it makes it odd: that one is heard from there on.
                const bool isAnswered = chain.wasMorse() && !isOne;
                if (!isAnswered && (isOne || !hearsOtherwise(*m_active))) {
                    m_heardUntil = now;
                    refuse(chain, isOne);
                }
                m_active.reset();
            }
        }
        if (!m_candidate || !m_candidate->chain().confirmed())
            return;
        const SignalChain& chain = m_candidate->chain();
        const bool isOne = isOneOfSeveral(*m_candidate);
        // Lengths are odd at a wrong speed as well.
        const bool isOdd =
            chain.verdict() == MorseJudge::Verdict::Other &&
            (chain.margin() > attention().sureMargin || chain.judgedMarks() > attention().oddMarks);
        if (isOdd && !isOne && (hearsAfterCarrier() || hearsOtherwise(*m_candidate)))
            return;
        if (isOne || isOdd)
            refuse(chain, isOne);
        if (isOne || isOdd ||
            now - m_candidate->firstMark_sample() > samplesIn(attention().unsure_s))
            m_candidate.reset();
    }

    // A keyed tone beside what was followed, which is Morse when it is heard at its own tone and
    // level: noticed at its very beginning, or another station. It is the candidate then.
    bool hearsOtherwise(const Follower& former)
    {
        const std::int64_t now = m_history.end();
        const auto found = findTone(framesIn(attention().search_s));
        if (!found ||
            std::fabs(found->tone_Hz - former.chain().tone_Hz()) > attention().refusedWidth_Hz)
            return false;
        const std::int64_t begin =
            std::max<std::int64_t>(0, now - samplesIn(attention().heardAgain_s));
        auto again = follow(guess(*found), begin);
        if (!again->chain().confirmed() || again->chain().verdict() == MorseJudge::Verdict::Other)
            return false;
        m_candidate = std::move(again);
        m_candidateSince = begin;
        m_candidateBegin = now;
        m_candidateLevel = found->level;
        return true;
    }

    // The strongest keyed tone where one may be.
    std::optional<ToneCandidate> findTone(std::int64_t frames) const
    {
        ToneFinder::Band band = {LOWEST_TONE_Hz, HIGHEST_TONE_Hz};
        if (m_settings.tone_Hz) {
            band = {*m_settings.tone_Hz - SET_TONE_TOLERANCE_Hz,
                    *m_settings.tone_Hz + SET_TONE_TOLERANCE_Hz};
        }
        return m_finder.find(frames, band, m_refused.bands(attention().refusedWidth_Hz));
    }

    // Looks for a signal where there is none under way, or where that one is silent.
    void search(double candidateLife_s)
    {
        const std::int64_t now = m_history.end();
        std::int64_t since = std::max(m_heardUntil, now - samplesIn(attention().heardAgain_s));
        // What was emitted is not looked for.
        std::int64_t frames =
            std::min(framesIn(attention().search_s),
                     std::max(now - m_heardUntil, samplesIn(attention().rivalSilence_s)) /
                         static_cast<std::int64_t>(m_finder.hop()));
        if (m_active) {
            const std::int64_t silence = now - m_active->lastMark_sample();
            if (silence <
                samplesIn(std::max(attention().rivalSilence_s,
                                   attention().rivalSilence_units * m_active->chain().unit_s()))) {
                m_candidate.reset();
                return;
            }
            since = std::max(since, m_active->lastMark_sample());
            frames = std::min(frames, silence / static_cast<std::int64_t>(m_finder.hop()));
        }
        if (m_candidate && now - m_candidateBegin > samplesIn(candidateLife_s))
            m_candidate.reset();
        const auto found = findTone(frames);
        if (!found || (m_active && std::fabs(m_active->chain().tone_Hz() - found->tone_Hz) <
                                       attention().ownTone_Hz))
            return;
        // A signal present throughout is not a reply.
        if (m_active && m_finder.power(found->tone_Hz, frames, framesIn(attention().search_s)) >
                            attention().neighbourPower * m_finder.power(found->tone_Hz, 0, frames))
            return;
        // What was noticed at its very beginning looked weaker than it is: it is heard again.
        const bool same = m_candidate && std::fabs(m_candidate->chain().tone_Hz() -
                                                   found->tone_Hz) < attention().sameTone_Hz;
        if (m_candidate && ((same && m_candidate->chain().confirmed()) ||
                            found->level < attention().louderCandidate * m_candidateLevel))
            return;
        if (!same)
            m_candidateBegin = now;
        m_candidate = follow(guess(*found), since);
        m_candidateSince = since;
        m_candidateLevel = found->level;
    }

    Settings m_settings;
    Decimator m_decimator;
    double m_rate_Hz;
    Rehearings m_rehearings;
    SymbolSink& m_sink;
    Observer* m_observer;
    SampleHistory m_history;
    ToneFinder m_finder;
    std::vector<float> m_frame;
    std::vector<float> m_waiting;
    std::unique_ptr<Follower> m_active;    // has a confirmed signal and speaks
    std::unique_ptr<Follower> m_candidate; // listens to what may be one
    std::int64_t m_heardUntil = 0;         // what came before was emitted
    std::int64_t m_candidateBegin = 0;     // when it was noticed
    std::int64_t m_candidateSince = 0;     // where it began to listen
    double m_candidateLevel = 0.0;
    RefusedTones m_refused;
};

Demodulator::Demodulator(const Settings& settings, SymbolSink& sink, Observer* observer)
{
    if (usable(settings.sampleRate_Hz))
        m_d = std::make_unique<Private>(settings, sink, observer);
}

Demodulator::~Demodulator() = default;

void Demodulator::push(const float* samples, std::size_t count)
{
    if (m_d)
        m_d->push(samples, count);
}

void Demodulator::finish()
{
    if (!m_d)
        return;
    m_d->finish();
    m_d.reset();
}

} // namespace demodulator
