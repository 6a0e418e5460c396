// SPDX-License-Identifier: MIT
#include "signal/teleprinter/startstop.h"

#include "signal/numbers.h"
#include "signal/teleprinter/framing.h"
#include "signal/teleprinter/tracking.h"

#include <algorithm>
#include <cmath>

namespace teleprinter {

using demodulator::PI;

namespace {

class StartStopChannel : public Channel
{
public:
    StartStopChannel(const Input& input, const Line& line, std::int64_t begin)
        : m_input(input)
        , m_own(input.parameters.startStop)
        , m_line(line)
        , m_bit(input.rate_Hz / line.baud)
        , m_nominalBit(m_bit)
        , m_decided(static_cast<double>(begin))
        , m_acquired(static_cast<double>(input.history.end()))
        , m_pauses(input.parameters.framing)
    {
        m_search.format.dataBits = line.kind.dataBits;
        m_search.parameters = input.parameters.framing;
    }

    std::vector<Word> advance(std::int64_t end, bool isLast) override
    {
        std::vector<Word> words;
        const double span = m_own.span_s * m_input.rate_Hz;
        while (!m_isOver) {
            const bool isFull = m_decided + span <= static_cast<double>(end);
            if (!isFull && !isLast)
                break;
            decide(isFull ? m_decided + span : static_cast<double>(end), !isFull, words);
            if (!isFull)
                break;
        }
        return words;
    }

    bool isOver() const override { return m_isOver; }
    const Line& line() const override { return m_line; }

private:
    void decide(double end, bool isLast, std::vector<Word>& words)
    {
        const double rate_Hz = m_input.rate_Hz;
        const double node = m_bit / NODES;
        const int before = static_cast<int>(m_own.before_s * rate_Hz / node);
        Grid grid = {m_decided - before * node, m_bit, 0};
        const auto from = static_cast<std::int64_t>(std::floor(grid.begin));
        const auto to = static_cast<std::int64_t>(std::ceil(end + m_bit));
        grid.count = std::max(0, static_cast<int>((end - grid.begin) / node));
        const TonePair tones(m_input.history, rate_Hz, {m_line.space_Hz, m_line.mark_Hz}, from, to);
        const double noise = m_input.spectrum.noise(std::min(m_line.mark_Hz, m_line.space_Hz),
                                                    std::max(m_line.mark_Hz, m_line.space_Hz),
                                                    m_line.baud, m_own.noise_s);
        const Evidence evidence = weigh(tones, grid, rate_Hz, noise, m_input.parameters.evidence);
        m_search.coherent = m_spans >= m_own.knownAfter;
        m_search.turn = 2.0 * PI * (m_line.mark_Hz - m_line.space_Hz) * m_bit / rate_Hz;
        const Frames frames = findFrames(evidence, m_search, m_pauses, before, m_isAfterFrame);

        const int frame = m_search.format.nodes();
        const double ahead =
            std::max(m_own.ahead_s * rate_Hz, m_own.leastAhead_characters * frame * node);
        const double until = isLast ? end + frame * node
                                    : end - std::min(ahead, m_own.mostAhead * (end - m_decided));
        std::vector<Decided> seen;
        double decided = isLast ? end : until;
        bool isAfterFrame = false;
        float framing = 0.0F;
        int count = 0;
        for (const Frame& found : frames.list) {
            const double begin = grid.at(found.node);
            const double frameEnd = grid.at(found.node + frame);
            if (frameEnd > until)
                break;
            decided = frameEnd;
            isAfterFrame = true;
            framing += found.framing;
            ++count;
            words.push_back(
                {found.word, begin, frameEnd,
                 found.margin < m_own.doubtful || found.afterSilence || !m_isAfterFrame});
            const float weight = std::clamp(found.framing, 0.0F, 1.0F);
            m_pauses.learn(found.pause, weight);
            if (found.score > m_own.goodFrame)
                seen.push_back({begin, found.word << 1U | 1U << (m_search.format.dataBits + 1U),
                                m_search.format.dataBits + 2});
        }
        // A pause, or none at all before it: what is decided ends with the span, but for a
        // character that has begun, and the mark before it.
        if (!isLast &&
            (!isAfterFrame || until - decided > m_own.longPause_characters * frame * node)) {
            decided = std::max(m_decided, until - (frame + NODES) * node);
            isAfterFrame = false;
        }
        m_pauses.update();
        judge(frames, count, framing, decided);
        if (m_wasPresent) { // noise would lead tones and clock astray
            follow(tones, seen, noise);
            ++m_spans;
        }
        m_decided = decided;
        m_isAfterFrame = isAfterFrame;
    }

    // Whether there is still a teleprinter.
    void judge(const Frames& frames, int count, float framing, double decided)
    {
        const double passed_s = (decided - m_decided) / m_input.rate_Hz;
        const bool isPresent =
            frames.score > m_own.present_per_s * static_cast<float>(m_own.span_s);
        // What is heard again begins before the signal does.
        m_wasPresent = m_wasPresent || isPresent || decided > m_acquired;
        if (!m_wasPresent)
            return;
        m_absent_s = isPresent ? 0.0 : m_absent_s + passed_s;
        m_idle_s = count > 0 ? 0.0 : m_idle_s + passed_s;
        const bool isForm = count < m_own.judgedFrom ||
                            framing > m_own.leastFramingMean * static_cast<float>(count);
        m_formless_s = isForm ? 0.0 : m_formless_s + passed_s;
        m_isOver = m_absent_s > m_own.overAfter_s || m_idle_s > m_own.idleAtMost_s ||
                   m_formless_s > m_own.overAfter_s;
    }

    void follow(const TonePair& tones, const std::vector<Decided>& seen, double noise)
    {
        if (seen.size() < 2)
            return;
        Tracking tracking(m_input.parameters.tracking);
        tracking.add(tones, seen, m_bit);
        const double rate_Hz = m_input.rate_Hz;
        followTones(tracking, m_line, rate_Hz, m_bit);
        m_strength.add(tracking, noise, rate_Hz, m_bit);
        m_line.snr_dB = m_strength.snr_dB();
        m_bit = std::clamp(m_bit * (1.0 + m_own.lengthGain * tracking.lengthError()),
                           m_nominalBit * (1.0 - m_own.mostLengthError),
                           m_nominalBit * (1.0 + m_own.mostLengthError));
        m_line.baud = rate_Hz / m_bit;
    }

    Input m_input;
    const StartStopParameters& m_own;
    Line m_line;
    SignalStrength m_strength;
    double m_bit;
    double m_nominalBit;
    double m_decided;
    double m_acquired; // by then there was a signal
    bool m_isAfterFrame = false;
    bool m_wasPresent = false;
    bool m_isOver = false;
    int m_spans = 0; // with the signal
    double m_absent_s = 0.0;
    double m_idle_s = 0.0;
    double m_formless_s = 0.0;
    FrameSearch m_search;
    PausePrior m_pauses;
};

} // namespace

std::unique_ptr<Channel> makeStartStopChannel(const Input& input, const Line& line,
                                              std::int64_t begin)
{
    return std::make_unique<StartStopChannel>(input, line, begin);
}

} // namespace teleprinter
