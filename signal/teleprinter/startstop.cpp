// SPDX-License-Identifier: MIT
#include "signal/teleprinter/startstop.h"

#include "signal/teleprinter/framing.h"
#include "signal/teleprinter/tracking.h"

#include <algorithm>
#include <cmath>

namespace teleprinter {

namespace {

constexpr double PI = 3.14159265358979323846;

// Decided in spans of so much, of which the last part only helps to decide what is before it.
constexpr double SPAN_s = 2.0;
constexpr double AHEAD_s = 0.7;
constexpr double LEAST_AHEAD_characters = 3.0;
constexpr double BEFORE_s = 0.5; // heard again, for the levels
constexpr double NOISE_s = 3.0;

// What is followed, in shares of the error seen in a span.
constexpr double LENGTH_GAIN = 0.3;
constexpr double MOST_LENGTH_ERROR = 0.05;

// A tone is so well known after so many spans that phases can be kept through a character.
constexpr int KNOWN_AFTER = 2;

constexpr double OVER_AFTER_s = 3.0;    // without either tone
constexpr double IDLE_AT_MOST_s = 20.0; // without a character
constexpr float PRESENT_per_s = 8.0F;   // logarithm of the likelihood of a signal
constexpr float LEAST_FRAMING_MEAN = 0.1F;
constexpr float GOOD_FRAME = 3.0F;
constexpr float DOUBTFUL = 3.0F; // least margin of an element

class StartStopChannel : public Channel
{
public:
    StartStopChannel(const Input& input, const Line& line, std::int64_t begin)
        : m_input(input)
        , m_line(line)
        , m_bit(input.rate_Hz / line.baud)
        , m_nominalBit(m_bit)
        , m_decided(static_cast<double>(begin))
    {
        m_search.format.dataBits = line.kind.dataBits;
    }

    std::vector<Word> advance(std::int64_t end, bool isLast) override
    {
        std::vector<Word> words;
        const double span = SPAN_s * m_input.rate_Hz;
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
        const int before = static_cast<int>(BEFORE_s * rate_Hz / node);
        Grid grid = {m_decided - before * node, m_bit, 0};
        const auto from = static_cast<std::int64_t>(std::floor(grid.begin));
        const auto to = static_cast<std::int64_t>(std::ceil(end + m_bit));
        grid.count = std::max(0, static_cast<int>((end - grid.begin) / node));
        const TonePair tones(m_input.history, rate_Hz, {m_line.space_Hz, m_line.mark_Hz}, from, to);
        const double noise =
            m_input.spectrum.noise(std::min(m_line.mark_Hz, m_line.space_Hz),
                                   std::max(m_line.mark_Hz, m_line.space_Hz), m_line.baud, NOISE_s);
        const Evidence evidence = weigh(tones, grid, rate_Hz, noise);
        m_search.coherent = m_spans >= KNOWN_AFTER;
        m_search.turn = 2.0 * PI * (m_line.mark_Hz - m_line.space_Hz) * m_bit / rate_Hz;
        const Frames frames = findFrames(evidence, m_search, m_pauses, before, m_isAfterFrame);

        const int frame = m_search.format.nodes();
        const double ahead = std::max(AHEAD_s * rate_Hz, LEAST_AHEAD_characters * frame * node);
        const double until =
            isLast ? end + frame * node : end - std::min(ahead, 0.6 * (end - m_decided));
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
            words.push_back({found.word, begin, frameEnd,
                             found.margin < DOUBTFUL || found.afterSilence || !m_isAfterFrame});
            const float weight = std::clamp(found.framing, 0.0F, 1.0F);
            m_pauses.learn(found.pause, weight);
            if (found.score > GOOD_FRAME)
                seen.push_back({begin, found.word << 1U | 1U << (m_search.format.dataBits + 1U),
                                m_search.format.dataBits + 2});
        }
        // A pause since the last character: what is decided ends with the span.
        if (isAfterFrame && until - decided > 2.0 * frame * node) {
            decided = until - frame * node;
            isAfterFrame = false;
        }
        m_pauses.update();
        judge(frames, count, framing, decided);
        follow(tones, seen);
        m_decided = decided;
        m_isAfterFrame = isAfterFrame;
        ++m_spans;
    }

    // Whether there is still a teleprinter.
    void judge(const Frames& frames, int count, float framing, double decided)
    {
        const double passed_s = (decided - m_decided) / m_input.rate_Hz;
        const bool isPresent = frames.score > PRESENT_per_s * static_cast<float>(SPAN_s);
        m_absent_s = isPresent ? 0.0 : m_absent_s + passed_s;
        m_idle_s = count > 0 ? 0.0 : m_idle_s + passed_s;
        const bool isForm = count < 4 || framing > LEAST_FRAMING_MEAN * static_cast<float>(count);
        m_formless_s = isForm ? 0.0 : m_formless_s + passed_s;
        m_isOver =
            m_absent_s > OVER_AFTER_s || m_idle_s > IDLE_AT_MOST_s || m_formless_s > OVER_AFTER_s;
    }

    void follow(const TonePair& tones, const std::vector<Decided>& seen)
    {
        if (seen.size() < 2)
            return;
        Tracking tracking;
        tracking.add(tones, seen, m_bit);
        const double rate_Hz = m_input.rate_Hz;
        followTones(tracking, m_line, rate_Hz, m_bit);
        m_bit = std::clamp(m_bit * (1.0 + LENGTH_GAIN * tracking.lengthError()),
                           m_nominalBit * (1.0 - MOST_LENGTH_ERROR),
                           m_nominalBit * (1.0 + MOST_LENGTH_ERROR));
        m_line.baud = rate_Hz / m_bit;
    }

    Input m_input;
    Line m_line;
    double m_bit;
    double m_nominalBit;
    double m_decided;
    bool m_isAfterFrame = false;
    bool m_isOver = false;
    int m_spans = 0;
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
