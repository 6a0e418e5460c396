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

// The best way to be at a node between characters, and where it came from.
struct Between
{
    float score = IMPOSSIBLE;
    int lastEnd = -1; // node at which the last character ended; -1: none
};

struct Start
{
    float score = IMPOSSIBLE;
    int lastEnd = -1;
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
    const FramingParameters& own = search.parameters;
    const int frame = search.format.nodes();
    const int last = evidence.grid.count - (2 + search.format.dataBits) * NODES; // last start
    Frames frames;
    if (last <= from || from < 0 || search.format.dataBits > MOST_BITS)
        return frames;
    Words turns;
    for (std::size_t n = 0; n < turns.size(); ++n)
        turns[n] = std::polar(1.0F, static_cast<float>(search.turn * static_cast<double>(n)));

    const auto size = static_cast<std::size_t>(last) + static_cast<std::size_t>(frame) + 1;
    std::vector<float> ends(size, IMPOSSIBLE); // best score with a character ending at a node
    std::vector<float> idle(size + 1, 0.0F);   // sum of the likelihood of mark up to a node
    std::vector<Start> starts(size);
    std::vector<float> scores = scoresOf(evidence, static_cast<std::size_t>(search.format.dataBits),
                                         static_cast<std::size_t>(last) + 1);
    std::vector<unsigned> words(scores.size(), AS_LIKELIER);
    float reached = IMPOSSIBLE; // by any character so far
    Between marking;
    Between silent;
    if (afterFrame)
        ends[static_cast<std::size_t>(from)] = 0.0F;
    else
        marking.score = silent.score = 0.0F;

    Start cut; // into a character that is not over at the last node
    for (int node = from; node < static_cast<int>(size); ++node) {
        const auto i = static_cast<std::size_t>(node);
        // The element that is here shows whether the line idles.
        const auto begin = static_cast<std::size_t>(std::max(0, node - search.idleAt));
        const float gain = search.coherent ? evidence.phaseGains[MARK][begin] : 0.0F;
        const float mark = (evidence.likelihoods[MARK][begin] + gain) / NODES;
        idle[i + 1] = idle[i] + mark;
        if (ends[i] > marking.score)
            marking = {ends[i], node};
        if (ends[i] + own.silenceBegins > silent.score)
            silent = {ends[i] + own.silenceBegins, node};
        if (marking.score + own.silenceBegins > silent.score)
            silent = {marking.score + own.silenceBegins, marking.lastEnd};
        if (silent.score + own.signalBegins > marking.score)
            marking = {silent.score + own.signalBegins, silent.lastEnd};

        // A machine sends mark before its first character, but what is heard may begin with it;
        // none after that comes out of silence.
        Start start;
        const float space = node <= last ? evidence.likelihoods[SPACE][i] : IMPOSSIBLE;
        if (silent.lastEnd < 0 && space > -own.firstWithoutMark)
            start = {silent.score + own.firstWithoutMark + pauses[-1], -1};
        const auto elementBefore = static_cast<std::size_t>(std::max(from, node - NODES));
        const float afterMark = marking.score + pauses[-1];
        if (idle[i] > idle[elementBefore] && afterMark > start.score)
            start = {afterMark, marking.lastEnd};
        const int longest = pauses.isFlat() ? -1 : std::min(node - from, PausePrior::LONGEST);
        for (int pause = 0; pause <= longest; ++pause) {
            const auto end = static_cast<std::size_t>(node - pause);
            const float score = ends[end] + idle[i] - idle[end] + pauses[pause];
            if (score > start.score)
                start = {score, node - pause};
        }
        starts[i] = start;
        if (node > last) {
            const float score = start.score + scoreOfBegin(evidence, i) + own.character;
            if (score > cut.score)
                cut = {score, start.lastEnd};
            marking.score += mark;
            continue;
        }

        const float far = start.score + scores[i] + own.character;
        if (search.coherent && scores[i] > own.worthRefining && far > reached - own.mostBehind) {
            Candidate candidate(evidence, search, node);
            candidate.refine(turns);
            words[i] = candidate.word();
            scores[i] = candidate.score();
        }
        ends[i + static_cast<std::size_t>(frame)] = start.score + scores[i] + own.character;
        reached = std::max(reached, ends[i + static_cast<std::size_t>(frame)]);
        marking.score += mark;
    }

    // The best way to the end of what can be seen: between characters, or within one.
    int end = marking.score > silent.score ? marking.lastEnd : silent.lastEnd;
    float best = std::max(marking.score, silent.score);
    if (cut.score > best) {
        best = cut.score;
        end = cut.lastEnd;
    }
    frames.score = best;
    while (end >= from + frame) {
        const auto i = static_cast<std::size_t>(end - frame);
        const int nodes = end - frame - starts[i].lastEnd;
        const int pause = starts[i].lastEnd < 0 || nodes > PausePrior::LONGEST ? -1 : nodes;
        const bool isAfterSilence =
            starts[i].lastEnd >= 0 && idle[i] < idle[static_cast<std::size_t>(starts[i].lastEnd)];
        if (isAfterSilence)
            frames.unexplained += nodes;
        const Candidate candidate(evidence, search, end - frame);
        const unsigned word = words[i] == AS_LIKELIER ? candidate.word() : words[i];
        frames.list.push_back({end - frame, pause, word, scores[i], candidate.framing(),
                               candidate.leastMargin(), isAfterSilence});
        end = starts[i].lastEnd;
    }
    std::reverse(frames.list.begin(), frames.list.end());
    return frames;
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
