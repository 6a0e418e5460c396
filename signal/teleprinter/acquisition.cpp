// SPDX-License-Identifier: MIT
#include "signal/teleprinter/acquisition.h"

#include "signal/teleprinter/synchronous.h"
#include "signal/teleprinter/tracking.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace teleprinter {

namespace {

// A line has been found when so many characters hold together so well.
constexpr int LEAST_CHARACTERS = 8;
constexpr double LEAST_FRAMING = 10.0;      // in all
constexpr double LEAST_FRAMING_MEAN = 0.35; // a character; 1.39 is all there can be
constexpr double LEAST_SCORE_MEAN = 2.0;    // a character
constexpr double LEAST_OCCUPIED = 0.4;
constexpr double MOST_UNEXPLAINED = 0.1;
// Share of the commonest character: all that hum and other regular sounds bring, and a third of
// what phasing signals look like.
constexpr double TOO_OFTEN = 0.8;
constexpr double OFTEN = 0.33;
// And when no other line is nearly as likely.
constexpr double LEAST_MARGIN = 15.0;

constexpr std::size_t REFINED = 4; // of the first attempts
constexpr int ROUNDS = 2;

// The tones of one signal are on in turn: their energies go against each other.
constexpr double EXCLUSION_s = 0.012;
constexpr double LEAST_EXCLUSION = 0.12;
constexpr std::size_t MOST_PAIRS = 4;

struct Attempt
{
    Acquired acquired;
    double noise = 0.0;
    std::vector<Decided> characters;
};

Attempt attemptStartStop(const Evidence& evidence, const LineKind& kind)
{
    FrameSearch search;
    search.format.dataBits = kind.dataBits;
    const Frames frames = findFrames(evidence, search, PausePrior(), 0, false);
    Attempt attempt;
    Fit& fit = attempt.acquired.fit;
    fit.score = static_cast<double>(frames.score);
    fit.characters = static_cast<int>(frames.list.size());
    for (const Frame& frame : frames.list) {
        fit.framing += static_cast<double>(frame.framing);
        if (frame.framing > 0.0F)
            attempt.characters.push_back({evidence.grid.at(frame.node),
                                          frame.word << 1U | 1U << (kind.dataBits + 1U),
                                          kind.dataBits + 2});
    }
    std::map<unsigned, int> words;
    int commonest = 0;
    for (const Frame& frame : frames.list)
        commonest = std::max(commonest, ++words[frame.word]);
    fit.commonest = static_cast<double>(commonest) / std::max(1, fit.characters);
    fit.occupied = static_cast<double>(frames.list.size()) * search.format.nodes() /
                   std::max(1, evidence.grid.count);
    fit.unexplained = frames.list.empty()
                          ? 1.0
                          : static_cast<double>(frames.unexplained) /
                                std::max(1, evidence.grid.count - frames.list.front().node);
    return attempt;
}

Attempt attemptSynchronous(const Evidence& evidence)
{
    const WordPhase phase = findWordPhase(evidence);
    Attempt attempt;
    Fit& fit = attempt.acquired.fit;
    fit.score = static_cast<double>(phase.score);
    fit.framing = static_cast<double>(phase.form);
    fit.characters = phase.words;
    fit.occupied = 1.0;
    attempt.acquired.begin = evidence.grid.at(phase.node);
    std::map<unsigned, int> words;
    int commonest = 0;
    for (int word = 0; word < phase.words; ++word) {
        const int at = phase.node + word * WORD_NODES;
        const WordLikelihoods likelihoods = weighWords(evidence, at);
        const unsigned chosen = choose(likelihoods).word;
        commonest = std::max(commonest, ++words[chosen]);
        if (meanOf(likelihoods) > 0.0F)
            attempt.characters.push_back(
                {evidence.grid.at(at), ccir476Elements()[chosen], WORD_ELEMENTS});
    }
    fit.commonest = static_cast<double>(commonest) / std::max(1, fit.characters);
    return attempt;
}

Attempt attempt(const Evidence& evidence, const LineKind& kind)
{
    return kind.code == Code::Ccir476 ? attemptSynchronous(evidence)
                                      : attemptStartStop(evidence, kind);
}

Grid gridOver(const TonePair& tones, double bit)
{
    return {tones.begin(), bit,
            static_cast<int>((tones.end() - tones.begin()) / bit * NODES) - NODES};
}

void exchangeTones(Evidence& evidence)
{
    std::swap(evidence.sums[SPACE], evidence.sums[MARK]);
    std::swap(evidence.strengths[SPACE], evidence.strengths[MARK]);
    std::swap(evidence.likelihoods[SPACE], evidence.likelihoods[MARK]);
    std::swap(evidence.phaseGains[SPACE], evidence.phaseGains[MARK]);
}

// How much the energies of two tones go against each other, 0 to 1.
double exclusionOf(const TonePair& tones, double rate_Hz)
{
    const double step = EXCLUSION_s * rate_Hz;
    double count = 0.0;
    ByTone<double> sums = {0.0, 0.0};
    ByTone<double> squares = {0.0, 0.0};
    double products = 0.0;
    for (double at = tones.begin(); at + step <= tones.end(); at += step) {
        ByTone<double> energies;
        for (const std::size_t tone : {SPACE, MARK}) {
            // Amplitudes, so that fading and crashes do not outweigh all else.
            energies[tone] = std::abs(tones.sum(tone, at, at + step));
            sums[tone] += energies[tone];
            squares[tone] += energies[tone] * energies[tone];
        }
        products += energies[SPACE] * energies[MARK];
        ++count;
    }
    const double spread = (squares[SPACE] - sums[SPACE] * sums[SPACE] / count) *
                          (squares[MARK] - sums[MARK] * sums[MARK] / count);
    return count < 2.0 || spread <= 0.0
               ? 0.0
               : -(products - sums[SPACE] * sums[MARK] / count) / std::sqrt(spread);
}

bool isSure(const Fit& fit)
{
    return fit.characters >= LEAST_CHARACTERS && fit.framing >= LEAST_FRAMING &&
           fit.framing >= LEAST_FRAMING_MEAN * fit.characters &&
           fit.score >= LEAST_SCORE_MEAN * fit.characters && fit.occupied >= LEAST_OCCUPIED &&
           fit.unexplained <= MOST_UNEXPLAINED && fit.commonest <= TOO_OFTEN;
}

class Search
{
public:
    Search(const demodulator::SampleHistory& history, const Spectrum& spectrum, double rate_Hz,
           const Known& known, std::int64_t begin, std::int64_t end)
        : m_history(history)
        , m_spectrum(spectrum)
        , m_rate_Hz(rate_Hz)
        , m_known(known)
        , m_begin(begin)
        , m_end(end)
        , m_span_s(static_cast<double>(end - begin) / rate_Hz)
    {
    }

    std::optional<Acquired> run()
    {
        std::map<double, std::vector<LineKind>> bySpeed;
        for (const LineKind& kind : kindsToTry(m_known))
            bySpeed[kind.baud].push_back(kind);
        std::map<std::size_t, std::vector<TonePair>> mixed;
        std::map<std::size_t, std::vector<ByTone<double>>> tones;
        for (const auto& [baud, kinds] : bySpeed) {
            const std::size_t width = m_spectrum.reach(baud);
            if (tones.count(width) == 0)
                mix(baud, tones[width], mixed[width]);
            for (std::size_t i = 0; i < mixed[width].size(); ++i)
                tryPair(mixed[width][i], tones[width][i], baud, kinds);
        }
        return decide();
    }

private:
    // Pairs of tones of which one is on at a time.
    void mix(double baud, std::vector<ByTone<double>>& tones, std::vector<TonePair>& mixed)
    {
        for (const ByTone<double>& pair : m_spectrum.pairs(m_known, baud, m_span_s)) {
            TonePair both(m_history, m_rate_Hz, pair, m_begin, m_end);
            if (exclusionOf(both, m_rate_Hz) < LEAST_EXCLUSION)
                continue;
            tones.push_back(pair);
            mixed.push_back(std::move(both));
            if (tones.size() == MOST_PAIRS)
                break;
        }
    }

    void tryPair(const TonePair& mixed, const ByTone<double>& tones_Hz, double baud,
                 const std::vector<LineKind>& kinds)
    {
        const double noise = m_spectrum.noise(tones_Hz[0], tones_Hz[1], baud, m_span_s);
        Evidence evidence = weigh(mixed, gridOver(mixed, m_rate_Hz / baud), m_rate_Hz, noise);
        for (const bool reversed : {false, true}) {
            if (reversed)
                exchangeTones(evidence);
            if (m_known.reversed && *m_known.reversed != reversed)
                continue;
            for (const LineKind& kind : kinds) {
                Attempt tried = attempt(evidence, kind);
                tried.noise = noise;
                tried.acquired.line = {kind, tones_Hz[reversed ? 0 : 1], tones_Hz[reversed ? 1 : 0],
                                       baud};
                m_attempts.push_back(std::move(tried));
            }
        }
    }

    // The same with tones and clock set right.
    void refine(Attempt& tried)
    {
        for (int round = 0; round < ROUNDS; ++round) {
            Line line = tried.acquired.line;
            const double bit = m_rate_Hz / line.baud;
            Tracking tracking;
            tracking.add(
                TonePair(m_history, m_rate_Hz, {line.space_Hz, line.mark_Hz}, m_begin, m_end),
                tried.characters, bit);
            const double most_Hz = 0.5 * line.kind.baud;
            line.space_Hz +=
                std::clamp(tracking.toneError_Hz(SPACE, m_rate_Hz, bit), -most_Hz, most_Hz);
            line.mark_Hz +=
                std::clamp(tracking.toneError_Hz(MARK, m_rate_Hz, bit), -most_Hz, most_Hz);
            // Synchronous words are as long as their clock; a little less would add up over the
            // span.
            if (line.kind.code != Code::Ccir476)
                line.baud /= 1.0 + tracking.lengthError();
            const TonePair tones(m_history, m_rate_Hz, {line.space_Hz, line.mark_Hz}, m_begin,
                                 m_end);
            const Evidence evidence =
                weigh(tones, gridOver(tones, m_rate_Hz / line.baud), m_rate_Hz, tried.noise);
            const double noise = tried.noise;
            tried = attempt(evidence, line.kind);
            tried.noise = noise;
            tried.acquired.line = line;
        }
    }

    std::optional<Acquired> decide()
    {
        const auto isBetter = [](const Attempt& a, const Attempt& b) {
            return a.acquired.fit.score > b.acquired.fit.score;
        };
        std::stable_sort(m_attempts.begin(), m_attempts.end(), isBetter);
        const std::size_t count = std::min(REFINED, m_attempts.size());
        if (count == 0 || m_attempts.front().acquired.fit.framing < 0.3 * LEAST_FRAMING)
            return std::nullopt;
        for (std::size_t i = 0; i < count; ++i)
            refine(m_attempts[i]);
        // The phasing signals of a synchronous line are also one start-stop character again and
        // again.
        const bool isSynchronous =
            std::any_of(m_attempts.begin(), m_attempts.end(), [](const Attempt& tried) {
                return tried.acquired.line.kind.code == Code::Ccir476 && isSure(tried.acquired.fit);
            });
        if (isSynchronous)
            m_attempts.erase(std::remove_if(m_attempts.begin(), m_attempts.end(),
                                            [](const Attempt& tried) {
                                                return tried.acquired.line.kind.code !=
                                                           Code::Ccir476 &&
                                                       tried.acquired.fit.commonest > OFTEN;
                                            }),
                             m_attempts.end());
        std::stable_sort(m_attempts.begin(), m_attempts.end(), isBetter);
        const Acquired& best = m_attempts.front().acquired;
        if (!isSure(best.fit))
            return std::nullopt;
        for (const Attempt& other : m_attempts) {
            if (!isSameLine(other.acquired.line, best.line) &&
                other.acquired.fit.score > best.fit.score - LEAST_MARGIN)
                return std::nullopt;
        }
        return best;
    }

    const demodulator::SampleHistory& m_history;
    const Spectrum& m_spectrum;
    double m_rate_Hz;
    const Known& m_known;
    std::int64_t m_begin;
    std::int64_t m_end;
    double m_span_s;
    std::vector<Attempt> m_attempts;
};

} // namespace

std::optional<Acquired> acquire(const demodulator::SampleHistory& history, const Spectrum& spectrum,
                                double rate_Hz, const Known& known, std::int64_t begin,
                                std::int64_t end)
{
    return Search(history, spectrum, rate_Hz, known, begin, end).run();
}

} // namespace teleprinter
