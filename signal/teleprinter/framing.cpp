// SPDX-License-Identifier: MIT
#include "signal/teleprinter/framing.h"

#include "signal/logarithms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace teleprinter {

using demodulator::logBesselI0;

namespace {

constexpr float IMPOSSIBLE = -1e30F; // of a score: below any that can come about

// Data elements of a character that a word has room for.
constexpr int MOST_BITS = 10;

// In place of a word: each element is the likelier of both.
constexpr unsigned AS_LIKELIER = ~0U;

using Words = std::array<std::complex<float>, MOST_BITS + 1>;

// Of what is a number: that of the library looks for what is none.
std::complex<float> product(const std::complex<float>& a, const std::complex<float>& b)
{
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// The score of a character from each of the first `count` nodes, each element as the likelier tone
// has it. From sums over places an element apart, so that long characters take no longer.
std::vector<float> scoresOf(const Evidence& evidence, std::size_t dataBits, std::size_t count)
{
    const std::vector<float>& space = evidence.likelihoods[SPACE];
    const std::vector<float>& mark = evidence.likelihoods[MARK];
    const std::size_t data = dataBits * NODES;
    std::vector<double> sums(NODES + count + data, 0.0);
    for (std::size_t i = 0; i < count + data; ++i)
        sums[NODES + i] = sums[i] + static_cast<double>(std::max(space[i], mark[i]));
    std::vector<float> scores(count);
    for (std::size_t i = 0; i < count; ++i)
        scores[i] = space[i] + mark[i + data + NODES] +
                    static_cast<float>(sums[NODES + i + data] - sums[NODES + i]) -
                    static_cast<float>(dataBits) * LOG_2;
    return scores;
}

// One start of a character.
class Candidate
{
public:
    Candidate(const Evidence& evidence, const FrameSearch& search, int node)
        : m_own(search.parameters)
        , m_evidence(evidence)
        , m_node(static_cast<std::size_t>(node))
        , m_bits(static_cast<std::size_t>(search.format.dataBits))
    {
        for (std::size_t bit = 0; bit < m_bits; ++bit) {
            if (margin(bit) > 0.0F)
                m_word |= 1U << bit;
        }
    }

    unsigned word() const { return m_word; }
    float score() const { return m_score; }
    float framing() const
    {
        return likelihood(SPACE, 0) - either(0) + likelihood(MARK, m_bits + 1) - either(m_bits + 1);
    }

    float leastMargin() const
    {
        float least = std::fabs(margin(0));
        for (std::size_t bit = 1; bit < m_bits; ++bit)
            least = std::min(least, std::fabs(margin(bit)));
        return least;
    }

    // Tries the doubtful elements both ways, the phase of each tone kept through the character.
    void refine(const Words& turns)
    {
        std::array<std::size_t, MOST_BITS> doubted = {};
        std::size_t count = 0;
        for (std::size_t bit = 0; bit < m_bits; ++bit) {
            if (std::fabs(margin(bit)) < m_own.doubted)
                doubted[count++] = bit;
        }
        const std::size_t tried =
            std::min(count, static_cast<std::size_t>(std::max(0, m_own.mostDoubted)));
        std::partial_sort(doubted.begin(), doubted.begin() + static_cast<std::ptrdiff_t>(tried),
                          doubted.begin() + static_cast<std::ptrdiff_t>(count),
                          [this](std::size_t a, std::size_t b) {
                              return std::fabs(margin(a)) < std::fabs(margin(b));
                          });
        const unsigned sure = m_word;
        for (unsigned choice = 0; choice < 1U << tried; ++choice) {
            unsigned word = sure;
            for (std::size_t i = 0; i < tried; ++i) {
                const unsigned bit = 1U << doubted[i];
                word = (choice >> i & 1U) != 0 ? word | bit : word & ~bit;
            }
            const float score = coherent(word, turns);
            if (score > m_score) {
                m_score = score;
                m_word = word;
            }
        }
    }

private:
    std::size_t place(std::size_t element) const { return m_node + element * NODES; }
    float likelihood(std::size_t tone, std::size_t element) const
    {
        return m_evidence.likelihoods[tone][place(element)];
    }
    float margin(std::size_t bit) const
    {
        return likelihood(MARK, bit + 1) - likelihood(SPACE, bit + 1);
    }
    float either(std::size_t element) const { return eitherTone(m_evidence, place(element)); }

    float coherent(unsigned word, const Words& turns) const
    {
        ByTone<std::complex<float>> sums = {0.0F, 0.0F};
        ByTone<std::size_t> elements = {0, 0};
        ByTone<float> strengths = {0.0F, 0.0F};
        for (std::size_t element = 0; element <= m_bits + 1; ++element) {
            const bool isMark =
                element == m_bits + 1 || (element > 0 && (word >> (element - 1) & 1U) != 0);
            const std::size_t tone = isMark ? MARK : SPACE;
            const std::complex<float>& turn = turns[elements[1 - tone]];
            sums[tone] +=
                product(m_evidence.sums[tone][place(element)], isMark ? turn : std::conj(turn));
            strengths[tone] += m_evidence.strengths[tone][place(element)];
            ++elements[tone];
        }
        float score = -static_cast<float>(m_bits) * LOG_2;
        for (const std::size_t tone : {SPACE, MARK})
            score += logBesselI0(std::sqrt(std::norm(sums[tone]))) - strengths[tone] +
                     phaseGain(strengths[tone]);
        return score;
    }

    const FramingParameters& m_own;
    const Evidence& m_evidence;
    std::size_t m_node;
    std::size_t m_bits;
    unsigned m_word = 0;
    float m_score = IMPOSSIBLE; // once refined
};

// Of a character that begins at a node and goes on behind the last one: what can be seen of it.
float scoreOfBegin(const Evidence& evidence, std::size_t node)
{
    const std::size_t count = evidence.likelihoods[MARK].size();
    float score = 0.0F;
    for (std::size_t at = node; at < count; at += NODES) {
        const float space = evidence.likelihoods[SPACE][at];
        const float element =
            at == node ? space : std::max(space, evidence.likelihoods[MARK][at]) - LOG_2;
        score += element * static_cast<float>(std::min<std::size_t>(NODES, count - at)) / NODES;
    }
    return score;
}

// The best way to a place, and where it came from.
struct Way
{
    float score = IMPOSSIBLE;
    int lastEnd = -1; // node at which the last character ended; -1: none
};

// The best way through all nodes from one on: characters, mark between them, and silence.
class FramePath
{
public:
    // `last`: node at which the last character may begin.
    FramePath(const Evidence& evidence, const FrameSearch& search, const PausePrior& pauses,
              int from, int last, bool afterFrame)
        : m_evidence(evidence)
        , m_search(search)
        , m_own(search.parameters)
        , m_pauses(pauses)
        , m_from(from)
        , m_last(last)
        , m_frame(search.format.nodes())
        , m_ends(static_cast<std::size_t>(last) + static_cast<std::size_t>(m_frame) + 1, IMPOSSIBLE)
        , m_idle(m_ends.size() + 1, 0.0F)
        , m_starts(m_ends.size())
        , m_scores(scoresOf(evidence, static_cast<std::size_t>(search.format.dataBits),
                            static_cast<std::size_t>(last) + 1))
        , m_words(m_scores.size(), AS_LIKELIER)
    {
        for (std::size_t n = 0; n < m_turns.size(); ++n)
            m_turns[n] = std::polar(1.0F, static_cast<float>(search.turn * static_cast<double>(n)));
        if (afterFrame)
            m_ends[static_cast<std::size_t>(from)] = 0.0F;
        else
            m_marking.score = m_silent.score = 0.0F;
        for (int node = from; node < static_cast<int>(m_ends.size()); ++node) {
            const float mark = idleAt(node);
            rest(node);
            m_starts[static_cast<std::size_t>(node)] = bestStart(node);
            if (node > last)
                cut(node);
            else
                putCharacter(node);
            m_marking.score += mark;
        }
    }

    // Back from the end of what can be seen: between characters, or within one.
    Frames frames() const
    {
        const Way& between = m_marking.score > m_silent.score ? m_marking : m_silent;
        const Way& best = m_cut.score > between.score ? m_cut : between;
        Frames frames;
        frames.score = best.score;
        for (int end = best.lastEnd; end >= m_from + m_frame;) {
            const int begin = end - m_frame;
            end = m_starts[static_cast<std::size_t>(begin)].lastEnd;
            frames.list.push_back(frameAt(begin));
            if (frames.list.back().afterSilence)
                frames.unexplained += begin - end;
        }
        std::reverse(frames.list.begin(), frames.list.end());
        return frames;
    }

private:
    // What the line gains by idling at a node: the element that is there shows it.
    float idleAt(int node)
    {
        const auto i = static_cast<std::size_t>(node);
        const auto begin = static_cast<std::size_t>(std::max(0, node - m_search.idleAt));
        const float gain = m_search.coherent ? m_evidence.phaseGains[MARK][begin] : 0.0F;
        const float mark = (m_evidence.likelihoods[MARK][begin] + gain) / NODES;
        m_idle[i + 1] = m_idle[i] + mark;
        return mark;
    }

    // Mark or silence at a node, whichever way leads there best.
    void rest(int node)
    {
        const float end = m_ends[static_cast<std::size_t>(node)];
        if (end > m_marking.score)
            m_marking = {end, node};
        if (end + m_own.silenceBegins > m_silent.score)
            m_silent = {end + m_own.silenceBegins, node};
        if (m_marking.score + m_own.silenceBegins > m_silent.score)
            m_silent = {m_marking.score + m_own.silenceBegins, m_marking.lastEnd};
        if (m_silent.score + m_own.signalBegins > m_marking.score)
            m_marking = {m_silent.score + m_own.signalBegins, m_silent.lastEnd};
    }

    // The best way to a start element at a node.
    Way bestStart(int node) const
    {
        const auto i = static_cast<std::size_t>(node);
        // A machine sends mark before its first character, but what is heard may begin with it;
        // none after that comes out of silence.
        Way start;
        const float space = node <= m_last ? m_evidence.likelihoods[SPACE][i] : IMPOSSIBLE;
        if (m_silent.lastEnd < 0 && space > -m_own.firstWithoutMark)
            start = {m_silent.score + m_own.firstWithoutMark + m_pauses[-1], -1};
        const auto elementBefore = static_cast<std::size_t>(std::max(m_from, node - NODES));
        const float afterMark = m_marking.score + m_pauses[-1];
        if (m_idle[i] > m_idle[elementBefore] && afterMark > start.score)
            start = {afterMark, m_marking.lastEnd};
        const int longest = m_pauses.isFlat() ? -1 : std::min(node - m_from, PausePrior::LONGEST);
        for (int pause = 0; pause <= longest; ++pause) {
            const auto end = static_cast<std::size_t>(node - pause);
            const float score = m_ends[end] + m_idle[i] - m_idle[end] + m_pauses[pause];
            if (score > start.score)
                start = {score, node - pause};
        }
        return start;
    }

    // A character from a node on.
    void putCharacter(int node)
    {
        const auto i = static_cast<std::size_t>(node);
        const Way& start = m_starts[i];
        const float far = start.score + m_scores[i] + m_own.character;
        if (m_search.coherent && m_scores[i] > m_own.worthRefining &&
            far > m_reached - m_own.mostBehind) {
            Candidate candidate(m_evidence, m_search, node);
            candidate.refine(m_turns);
            m_words[i] = candidate.word();
            m_scores[i] = candidate.score();
        }
        float& end = m_ends[i + static_cast<std::size_t>(m_frame)];
        end = start.score + m_scores[i] + m_own.character;
        m_reached = std::max(m_reached, end);
    }

    // One that is not over at the last node.
    void cut(int node)
    {
        const auto i = static_cast<std::size_t>(node);
        const float score = m_starts[i].score + scoreOfBegin(m_evidence, i) + m_own.character;
        if (score > m_cut.score)
            m_cut = {score, m_starts[i].lastEnd};
    }

    Frame frameAt(int node) const
    {
        const auto i = static_cast<std::size_t>(node);
        const int lastEnd = m_starts[i].lastEnd;
        const bool isLong = lastEnd < 0 || node - lastEnd > PausePrior::LONGEST;
        const bool isAfterSilence =
            lastEnd >= 0 && m_idle[i] < m_idle[static_cast<std::size_t>(lastEnd)];
        const Candidate candidate(m_evidence, m_search, node);
        const unsigned word = m_words[i] == AS_LIKELIER ? candidate.word() : m_words[i];
        return {node,          isLong ? -1 : node - lastEnd, word,
                m_scores[i],   candidate.framing(),          candidate.leastMargin(),
                isAfterSilence};
    }

    const Evidence& m_evidence;
    const FrameSearch& m_search;
    const FramingParameters& m_own;
    const PausePrior& m_pauses;
    int m_from;
    int m_last;
    int m_frame;               // nodes of a character
    std::vector<float> m_ends; // best score with a character ending at a node
    std::vector<float> m_idle; // sum of the likelihood of mark up to a node
    std::vector<Way> m_starts;
    std::vector<float> m_scores; // of the character from each node
    std::vector<unsigned> m_words;
    Words m_turns = {};
    float m_reached = IMPOSSIBLE; // by any character so far
    Way m_marking;                // between characters, with mark and without
    Way m_silent;
    Way m_cut; // into a character that is not over at the last node
};

} // namespace

PausePrior::PausePrior(const FramingParameters& parameters)
    : m_parameters(parameters)
    , m_counts(LONGEST + 1, 0.0F)
    , m_logs(LONGEST + 2)
{
    update();
}

void PausePrior::learn(int nodes, float weight)
{
    for (float& count : m_counts)
        count *= 1.0F - weight / m_parameters.remembered;
    const float shares[] = {1.0F - 2.0F * (m_parameters.besideLearnt + m_parameters.nextLearnt),
                            m_parameters.besideLearnt, m_parameters.nextLearnt};
    for (int offset = -2; offset <= 2; ++offset) {
        const int at = nodes + offset;
        if (nodes >= 0 && at >= 0 && at <= LONGEST)
            m_counts[static_cast<std::size_t>(at)] += weight * shares[std::abs(offset)];
    }
}

void PausePrior::update()
{
    float sum = 0.0F;
    for (const float count : m_counts)
        sum += count;
    m_isFlat = sum < m_parameters.leastLearnt;
    const float known =
        (1.0F - m_parameters.anyPause) * std::min(1.0F, sum / m_parameters.learntFrom);
    for (int nodes = 0; nodes <= LONGEST; ++nodes) {
        const float learnt = sum > 0.0F ? m_counts[static_cast<std::size_t>(nodes)] / sum : 0.0F;
        const float any =
            (1.0F - known) * (1.0F - m_parameters.longPause) / static_cast<float>(LONGEST + 1);
        m_logs[static_cast<std::size_t>(nodes)] = std::log(known * learnt + any);
    }
    // A long pause may end anywhere: each node of it is as improbable as one of the short.
    m_logs[LONGEST + 1] =
        std::log((1.0F - known) * m_parameters.longPause / static_cast<float>(LONGEST + 1));
}

Frames findFrames(const Evidence& evidence, const FrameSearch& search, const PausePrior& pauses,
                  int from, bool afterFrame)
{
    const int last = evidence.grid.count - (2 + search.format.dataBits) * NODES;
    if (last <= from || from < 0 || search.format.dataBits > MOST_BITS)
        return {};
    return FramePath(evidence, search, pauses, from, last, afterFrame).frames();
}

float scoreOfSender(const Frames& frames, const FramingParameters& parameters)
{
    const PausePrior any(parameters);
    std::vector<float> seen(PausePrior::LONGEST + 1, 0.0F);
    float count = 1.0F;
    float machine = -LOG_2; // it is either of both
    float hand = machine;
    for (const Frame& frame : frames.list) {
        hand += any[frame.pause];
        if (frame.pause < 0) {
            machine += any[frame.pause];
            continue;
        }
        const auto pause = static_cast<std::size_t>(frame.pause);
        machine += std::log((seen[pause] + std::exp(any[frame.pause])) / count);
        seen[pause] += 1.0F - 2.0F * parameters.besideMachine;
        if (pause > 0)
            seen[pause - 1] += parameters.besideMachine;
        if (pause + 1 < seen.size())
            seen[pause + 1] += parameters.besideMachine;
        ++count;
    }
    const auto asFound = static_cast<float>(frames.list.size()) * (any[-1] + parameters.character);
    return frames.score - asFound + std::max(machine, hand);
}

} // namespace teleprinter
