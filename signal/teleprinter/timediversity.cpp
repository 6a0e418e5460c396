// SPDX-License-Identifier: MIT
#include "signal/teleprinter/timediversity.h"

#include "signal/numbers.h"
#include "signal/teleprinter/synchronous.h"
#include "signal/teleprinter/tracking.h"

#include <algorithm>
#include <cmath>
#include <deque>

namespace teleprinter {

using demodulator::PI;

namespace {

// Words, about 10 s, that wait until it is known which of them repeat others; older ones are
// dropped.
constexpr std::size_t MOST_WAITING = 150;

class TimeDiversityChannel : public Channel
{
public:
    TimeDiversityChannel(const Input& input, const Line& line, double begin, std::int64_t from)
        : m_input(input)
        , m_own(input.parameters.timeDiversity)
        , m_line(line)
        , m_bit(input.rate_Hz / line.baud)
    {
        const double word = WORD_ELEMENTS * m_bit;
        m_next = begin - std::floor((begin - static_cast<double>(from)) / word) * word;
    }

    std::vector<Word> advance(std::int64_t end, bool isLast) override
    {
        std::vector<Word> words;
        while (!m_isOver) {
            const double room = (static_cast<double>(end) - m_next) / m_bit / WORD_ELEMENTS;
            const int count = room > m_own.span_words + 1.0 ? m_own.span_words
                              : isLast                      ? std::max(0, static_cast<int>(room))
                                                            : 0;
            if (count == 0)
                break;
            decide(count, words);
        }
        if (isLast)
            drain(words);
        return words;
    }

    bool isOver() const override { return m_isOver; }
    const Line& line() const override { return m_line; }

private:
    struct Slot
    {
        WordLikelihoods words;
        double begin;
    };

    void decide(int count, std::vector<Word>& words)
    {
        const double rate_Hz = m_input.rate_Hz;
        const double node = m_bit / NODES;
        const int before = static_cast<int>(m_own.before_s * rate_Hz / node);
        const Grid grid = {m_next - before * node, m_bit, before + count * WORD_NODES};
        const double end = m_next + count * WORD_ELEMENTS * m_bit;
        const TonePair tones(m_input.history, rate_Hz, {m_line.space_Hz, m_line.mark_Hz},
                             static_cast<std::int64_t>(std::floor(grid.begin)),
                             static_cast<std::int64_t>(std::ceil(end + m_bit)));
        const double noise = m_input.spectrum.noise(std::min(m_line.mark_Hz, m_line.space_Hz),
                                                    std::max(m_line.mark_Hz, m_line.space_Hz),
                                                    m_line.baud, m_own.noise_s);
        const Evidence evidence = weigh(tones, grid, rate_Hz, noise, m_input.parameters.evidence);
        const double turn = 2.0 * PI * (m_line.mark_Hz - m_line.space_Hz) * m_bit / rate_Hz;
        std::vector<Decided> seen;
        float score = 0.0F;
        float form = 0.0F;
        for (int word = 0; word < count; ++word) {
            const int at = before + word * WORD_NODES;
            const WordLikelihoods likelihoods = m_spans < m_own.knownAfter
                                                    ? weighWords(evidence, at)
                                                    : weighWords(evidence, at, turn);
            const Chosen chosen = choose(likelihoods);
            const float mean = meanOf(likelihoods);
            score += mean;
            form += mean - anyWord(evidence, at);
            if (mean > m_own.present)
                seen.push_back({grid.at(at), ccir476Elements()[chosen.word], WORD_ELEMENTS});
            m_slots.push_back({likelihoods, grid.at(at)});
            if (m_slots.size() > REPEATED_AFTER)
                order();
            give(words);
        }
        const double passed_s = count * WORD_ELEMENTS * m_bit / rate_Hz;
        const bool isPresent = score > m_own.present * static_cast<float>(count);
        const bool isForm = form > m_own.formless * static_cast<float>(count);
        m_absent_s = isPresent && isForm ? 0.0 : m_absent_s + passed_s;
        m_wasHeard = m_wasHeard || (isPresent && isForm);
        m_isOver = m_wasHeard && m_absent_s > m_own.overAfter_s;
        m_next = end;
        if (m_wasHeard) { // noise would lead tones and clock astray
            follow(tones, seen, noise);
            ++m_spans;
        }
    }

    // Of two that follow each other, one is direct and one repeats: which, is seen from whether the
    // words so far apart are alike.
    void order()
    {
        const Slot& direct = m_slots[m_slots.size() - 1 - REPEATED_AFTER];
        const Slot& repeated = m_slots.back();
        const float alike = meanOf(combine(direct.words, repeated.words)) - meanOf(direct.words) -
                            meanOf(repeated.words);
        const std::size_t parity = (m_given + m_slots.size() - 1 - REPEATED_AFTER) % 2;
        m_alike[parity] =
            m_own.faded * m_alike[parity] + std::clamp(alike, -m_own.mostAlike, m_own.mostAlike);
        m_isOrdered = m_isOrdered || std::fabs(m_alike[0] - m_alike[1]) > m_own.sureOrder;
    }

    void give(std::vector<Word>& words)
    {
        if (!m_isOrdered) {
            if (m_slots.size() > MOST_WAITING) {
                m_slots.pop_front();
                ++m_given;
            }
            return;
        }
        const std::size_t parity = m_alike[1] > m_alike[0] ? 1 : 0;
        while (m_slots.size() > REPEATED_AFTER) {
            if (m_given % 2 == parity)
                put(combine(m_slots.front().words, m_slots[REPEATED_AFTER].words), words);
            m_slots.pop_front();
            ++m_given;
        }
    }

    // At the end, the last characters were not repeated any more.
    void drain(std::vector<Word>& words)
    {
        give(words);
        m_slots.clear();
    }

    void put(const WordLikelihoods& likelihoods, std::vector<Word>& words)
    {
        const double begin = m_slots.front().begin;
        const Chosen chosen = choose(likelihoods);
        if (meanOf(likelihoods) > m_own.presentTwice)
            words.push_back({chosen.word, begin, begin + WORD_ELEMENTS * m_bit,
                             m_isMissed || chosen.margin < m_own.doubtful,
                             m_slots[REPEATED_AFTER].begin});
        m_isMissed = meanOf(likelihoods) <= m_own.presentTwice;
    }

    static float anyWord(const Evidence& evidence, int node)
    {
        float any = 0.0F;
        for (int at = node; at < node + WORD_ELEMENTS * NODES; at += NODES)
            any += eitherTone(evidence, static_cast<std::size_t>(at));
        return any;
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
        const double late = tracking.beginError(m_bit);
        m_next += m_own.beginGain * late;
        m_bit += m_own.lengthGain * late / (m_own.span_words * WORD_ELEMENTS);
        m_line.baud = rate_Hz / m_bit;
    }

    Input m_input;
    const TimeDiversityParameters& m_own;
    Line m_line;
    SignalStrength m_strength;
    double m_bit;
    double m_next; // where the next word begins
    int m_spans = 0;
    std::deque<Slot> m_slots;
    std::size_t m_given = 0; // number of the first slot that is kept
    float m_alike[2] = {0.0F, 0.0F};
    bool m_isOrdered = false;
    bool m_isMissed = false; // the last character
    bool m_wasHeard = false;
    bool m_isOver = false;
    double m_absent_s = 0.0;
};

} // namespace

std::unique_ptr<Channel> makeTimeDiversityChannel(const Input& input, const Line& line,
                                                  double begin, std::int64_t from)
{
    return std::make_unique<TimeDiversityChannel>(input, line, begin, from);
}

} // namespace teleprinter
