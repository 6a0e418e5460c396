// SPDX-License-Identifier: MIT
#include "signal/teleprinter/acquisition.h"

#include "signal/numbers.h"
#include "signal/teleprinter/bitstream.h"
#include "signal/teleprinter/synchronous.h"
#include "signal/teleprinter/tracking.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <limits>
#include <map>
#include <set>

namespace teleprinter {

using demodulator::PI;

namespace {

// What a word can gain by its form: of 128 words of seven elements, 35 are used (log 128/35).
constexpr double MOST_FORM = 1.3;
// From here on one speed is a multiple of another: no usual speed is between 1.65 and 2 times
// another one.
constexpr double MULTIPLE = 1.9;

struct Attempt
{
    Acquired acquired;
    double noise = 0.0;
    std::vector<Decided> characters;
};

double evenPausesOf(const std::vector<Frame>& frames, int alike_nodes)
{
    std::vector<int> pauses;
    for (std::size_t i = 1; i < frames.size(); ++i)
        pauses.push_back(frames[i].pause);
    if (pauses.empty())
        return 0.0;
    const auto middle = pauses.begin() + static_cast<std::ptrdiff_t>(pauses.size() / 2);
    std::nth_element(pauses.begin(), middle, pauses.end());
    const int usual = *middle;
    const auto even = std::count_if(pauses.begin(), pauses.end(), [usual, alike_nodes](int pause) {
        return pause >= 0 && std::abs(pause - usual) <= alike_nodes;
    });
    return static_cast<double>(even) / static_cast<double>(pauses.size());
}

// Share of the characters that have the parity, or the commoner of both where none is known. What
// nobody sends are nine bits of data.
double parityOf(const std::vector<Frame>& frames, const LineKind& kind,
                const std::optional<Parity>& known)
{
    if (kind.code != Code::Ascii || (!known && kind.dataBits <= 8) || known == Parity::None)
        return 1.0;
    const auto share = [&frames](Parity parity) {
        const auto count =
            std::count_if(frames.begin(), frames.end(),
                          [parity](const Frame& frame) { return hasParity(frame.word, parity); });
        return static_cast<double>(count) / std::max(1.0, static_cast<double>(frames.size()));
    };
    return known ? share(*known) : std::max(share(Parity::Even), share(Parity::Odd));
}

Attempt attemptStartStop(const Evidence& evidence, const LineKind& kind, const Known& known,
                         const Parameters& parameters)
{
    const AcquisitionParameters& own = parameters.acquisition;
    FrameSearch search;
    search.parameters = parameters.framing;
    search.format.dataBits = kind.dataBits;
    const Frames frames = findFrames(evidence, search, PausePrior(parameters.framing), 0, false);
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
    std::size_t changes = 0;
    int firstMarks = 0;
    for (const Frame& frame : frames.list) {
        firstMarks += static_cast<int>(frame.word & 1U);
        commonest = std::max(commonest, ++words[frame.word]);
        const unsigned elements = frame.word << 1U | 1U << (kind.dataBits + 1U);
        const unsigned within = (1U << (kind.dataBits + 1U)) - 1U;
        changes += std::bitset<16>((elements ^ elements >> 1U) & within).count();
    }
    fit.regular = static_cast<double>(changes) /
                  std::max(1.0, static_cast<double>(fit.characters) * (kind.dataBits + 1));
    // Where tones are exchanged, the eighth element of ASCII, which is always the same, comes to
    // stand for a stop, and the start for the first element.
    fit.isSteadyFirst =
        kind.code == Code::Ascii &&
        std::min(firstMarks, fit.characters - firstMarks) * own.steadyFirst < fit.characters;
    if (fit.isSteadyFirst)
        fit.score -= own.costOfSteadyFirst * fit.characters;
    fit.parity = parityOf(frames.list, kind, known.parity);
    fit.evenPauses = evenPausesOf(frames.list, own.alike_nodes);
    fit.commonest = static_cast<double>(commonest) / std::max(1, fit.characters);
    fit.formed = static_cast<double>(attempt.characters.size()) / std::max(1, fit.characters);
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
    fit.formed = fit.framing / (MOST_FORM * std::max(1, fit.characters));
    return attempt;
}

Attempt attempt(const Evidence& evidence, const LineKind& kind, const Known& known,
                const Parameters& parameters)
{
    return kind.code == Code::Ccir476 ? attemptSynchronous(evidence)
                                      : attemptStartStop(evidence, kind, known, parameters);
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
double exclusionOf(const TonePair& tones, double step)
{
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

// Mean amplitude of the tone that is off over that of the one that is on. Tones that are nearer
// than the speed are seen in each other's filter: what the one that is on leaves there does not
// count.
double contrastOf(const TonePair& tones, const std::vector<Decided>& characters, double bit,
                  double shift_radians)
{
    const double half = 0.5 * shift_radians * bit;
    const double seen = half != 0.0 ? std::sin(half) / half : 0.0;
    double off = 0.0;
    double on = 0.0;
    for (const Decided& character : characters) {
        for (int element = 0; element < character.count; ++element) {
            const double begin = character.begin + element * bit;
            const bool isMark = (character.elements >> element & 1U) != 0;
            const std::complex<double> own = tones.sum(isMark ? MARK : SPACE, begin, begin + bit);
            const std::complex<double> turn =
                std::polar(seen, (isMark ? shift_radians : -shift_radians) * (begin + 0.5 * bit));
            off += std::abs(tones.sum(isMark ? SPACE : MARK, begin, begin + bit) - own * turn);
            on += std::abs(own);
        }
    }
    return on > 0.0 ? off / (on * std::sqrt(1.0 - seen * seen)) : 1.0;
}

// Mean of the stronger tone.
double strengthOf(const Evidence& evidence)
{
    const std::vector<float>& space = evidence.strengths[SPACE];
    const std::vector<float>& mark = evidence.strengths[MARK];
    double sum = 0.0;
    for (std::size_t node = 0; node < mark.size(); ++node)
        sum += static_cast<double>(std::max(space[node], mark[node]));
    return sum / std::max(1.0, static_cast<double>(mark.size()));
}

class Search
{
public:
    Search(const Input& input, const Known& known, std::int64_t begin, std::int64_t end,
           const Line* followed)
        : m_parameters(input.parameters)
        , m_own(input.parameters.acquisition)
        , m_history(input.history)
        , m_spectrum(input.spectrum)
        , m_rate_Hz(input.rate_Hz)
        , m_known(known)
        , m_followed(followed)
        , m_begin(begin)
        , m_end(end)
        , m_span_s(static_cast<double>(end - begin) / input.rate_Hz)
    {
    }

    std::optional<Acquired> run()
    {
        if (m_followed != nullptr)
            tryFollowed();
        std::map<double, std::vector<LineKind>> bySpeed;
        for (const LineKind& kind : kindsToTry(m_known, m_parameters.line)) {
            if (mayReplace(kind))
                bySpeed[kind.baud].push_back(kind);
        }
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
    bool isFollowed(const Acquired& acquired) const
    {
        return m_followed != nullptr && isSameLine(acquired.line, *m_followed);
    }

    bool hasForm(const Fit& fit) const
    {
        return fit.framing >= m_own.leastForm && fit.parity >= m_own.leastParity;
    }

    // A line that is followed, and whole, may only turn out to be one of a multiple of its speed.
    bool mayReplace(const LineKind& kind) const
    {
        return m_attempts.empty() || !isWhole(m_attempts.front().acquired.fit) ||
               kind.baud > MULTIPLE * m_followed->kind.baud;
    }

    // Nothing but a line of this very kind has nearly all characters in their form.
    bool isWhole(const Fit& fit) const
    {
        return !fit.isSteadyFirst && hasForm(fit) && fit.characters >= m_own.leastWhole &&
               fit.formed >= m_own.wholeFormed &&
               fit.framing >= m_own.wholeFramingMean * fit.characters;
    }

    // Characters of ASCII that follow each other evenly: data do so for some, never for so many.
    bool isMachine(const Acquired& acquired) const
    {
        return acquired.line.kind.code == Code::Ascii && isWhole(acquired.fit) &&
               acquired.fit.evenPauses >= m_own.wholeEven;
    }

    bool isKnown(const Acquired& acquired) const
    {
        return isKnownSpeed(acquired.line.kind.baud, m_known, m_parameters.line);
    }

    // A second stop may as well be data that are always mark.
    bool isSameText(const Acquired& a, const Acquired& b) const
    {
        Line line = a.line;
        if (isWhole(a.fit) && isWhole(b.fit))
            line.kind.dataBits = b.line.kind.dataBits;
        // A speed that was known, and a usual one near it, are both the one that is meant.
        if (m_known.baud && isKnown(a) && isKnown(b))
            line.kind.baud = b.line.kind.baud;
        return isSameLine(line, b.line);
    }

    // Two characters of a line may together look like one of half the speed, with start and stop;
    // the other way round, the stop would have to be where data are.
    bool isMultiple(const Acquired& faster, const Acquired& slower) const
    {
        return isWhole(faster.fit) && isWhole(slower.fit) &&
               faster.line.kind.baud > MULTIPLE * slower.line.kind.baud;
    }

    // As a machine sends them, not a hand.
    bool isEven(const Fit& fit) const { return fit.evenPauses >= m_own.evenPauses; }

    // Data of the same speed look like characters with pauses of any number of elements: a few have
    // to show more than many, or than those of a machine.
    bool isFewTyped(const Fit& fit) const
    {
        return !isEven(fit) && fit.characters < m_own.manyTyped;
    }
    bool isInForm(const Fit& fit) const
    {
        return fit.formed >= m_own.typedFormed &&
               fit.framing >= m_own.typedFramingMean * fit.characters &&
               fit.contrast <= m_own.typedContrast;
    }

    bool isSure(const Acquired& acquired) const
    {
        const Fit& fit = acquired.fit;
        const Line& line = acquired.line;
        return std::min(line.mark_Hz, line.space_Hz) >= LOWEST_TONE_Hz &&
               line.shift_Hz() >= m_parameters.spectrum.leastIndex * line.baud &&
               (line.kind.code != Code::Ascii ||
                (fit.regular <= m_own.mostRegular && fit.formed >= m_own.leastFormedAscii &&
                 fit.framing >= m_own.leastAsciiMean * fit.characters)) &&
               fit.characters >= m_own.leastCharacters && (!isFewTyped(fit) || isInForm(fit)) &&
               fit.framing >= m_own.leastFraming && fit.parity >= m_own.leastParity &&
               fit.framing >= m_own.leastFramingMean * fit.characters &&
               fit.score >= m_own.leastScoreMean * fit.characters &&
               fit.occupied >= (isEven(fit) ? m_own.leastOccupied : m_own.typedOccupied) &&
               fit.unexplained <= m_own.mostUnexplained && fit.commonest <= m_own.tooOften &&
               fit.contrast <= m_own.mostContrast;
    }

    // How much likelier it is than data without characters, at any speed.
    double overData(const Acquired& acquired, double noise) const
    {
        const Line& line = acquired.line;
        if (line.kind.code == Code::Ccir476)
            return acquired.fit.framing; // is over data already
        const TonePair tones(m_history, m_rate_Hz, {line.space_Hz, line.mark_Hz}, m_begin, m_end);
        // One noise for all speeds, and so much of it that none gains by how a strong signal is
        // bounded.
        EvidenceParameters unbounded = m_parameters.evidence;
        unbounded.mostStrength_per_s = std::numeric_limits<double>::max();
        double density = noise;
        const auto evidenceAt = [&](double baud) {
            return weigh(tones, gridOver(tones, m_rate_Hz / baud), m_rate_Hz, density, unbounded);
        };
        const double strength = strengthOf(evidenceAt(line.baud));
        density *= std::max(1.0, strength / m_own.comparedStrength);
        const Evidence own = evidenceAt(line.baud);

        FrameSearch search;
        search.parameters = m_parameters.framing;
        search.format.dataBits = line.kind.dataBits;
        search.idleAt = NODES - 1;
        const auto text = static_cast<double>(
            scoreOfSender(findFrames(own, search, PausePrior(m_parameters.framing), 0, false),
                          m_parameters.framing));
        std::set<double> others;
        for (const LineKind& kind : lineKinds())
            others.insert(kind.baud);
        others.erase(line.baud);
        double data = static_cast<double>(bitStreamScore(own, m_parameters.bitStream));
        for (const double baud : others)
            data = std::max(data, static_cast<double>(
                                      bitStreamScore(evidenceAt(baud), m_parameters.bitStream)));
        return text - data;
    }

    // Pairs of tones of which one is on at a time.
    void mix(double baud, std::vector<ByTone<double>>& tones, std::vector<TonePair>& mixed)
    {
        for (const TonesFound& found : m_spectrum.pairs(m_known, baud, m_span_s)) {
            const ByTone<double>& pair = found.tones_Hz;
            TonePair both(m_history, m_rate_Hz, pair, m_begin, m_end);
            const double step_s = std::min(m_own.exclusion_s, m_own.exclusion_bits / baud);
            const bool canExclude =
                !found.areMerged || pair[1] - pair[0] > m_own.excludesFrom * baud;
            if (canExclude && exclusionOf(both, step_s * m_rate_Hz) < m_own.leastExclusion)
                continue;
            tones.push_back(pair);
            mixed.push_back(std::move(both));
            if (tones.size() == static_cast<std::size_t>(m_own.mostPairs))
                break;
        }
    }

    void tryPair(const TonePair& mixed, const ByTone<double>& tones_Hz, double baud,
                 const std::vector<LineKind>& kinds)
    {
        const double noise = m_spectrum.noise(tones_Hz[0], tones_Hz[1], baud, m_span_s);
        Evidence evidence = weigh(mixed, gridOver(mixed, m_rate_Hz / baud), m_rate_Hz, noise,
                                  m_parameters.evidence);
        for (const bool reversed : {false, true}) {
            if (reversed)
                exchangeTones(evidence);
            if (m_known.reversed && *m_known.reversed != reversed)
                continue;
            for (const LineKind& kind : kinds) {
                Attempt tried = attempt(evidence, kind, m_known, m_parameters);
                tried.noise = noise;
                tried.acquired.line = {kind, tones_Hz[reversed ? 0 : 1], tones_Hz[reversed ? 1 : 0],
                                       baud};
                m_attempts.push_back(std::move(tried));
            }
        }
    }

    void tryFollowed()
    {
        const double noise = m_spectrum.noise(std::min(m_followed->mark_Hz, m_followed->space_Hz),
                                              std::max(m_followed->mark_Hz, m_followed->space_Hz),
                                              m_followed->baud, m_span_s);
        const TonePair tones(m_history, m_rate_Hz, {m_followed->space_Hz, m_followed->mark_Hz},
                             m_begin, m_end);
        Attempt tried = attempt(weigh(tones, gridOver(tones, m_rate_Hz / m_followed->baud),
                                      m_rate_Hz, noise, m_parameters.evidence),
                                m_followed->kind, m_known, m_parameters);
        tried.noise = noise;
        tried.acquired.line = *m_followed;
        m_attempts.push_back(std::move(tried));
    }

    // The same with tones and clock set right.
    void refine(Attempt& tried)
    {
        for (int round = 0; round < m_own.rounds; ++round) {
            Line line = tried.acquired.line;
            const double bit = m_rate_Hz / line.baud;
            Tracking tracking(m_parameters.tracking);
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
            const Evidence evidence = weigh(tones, gridOver(tones, m_rate_Hz / line.baud),
                                            m_rate_Hz, tried.noise, m_parameters.evidence);
            const double noise = tried.noise;
            tried = attempt(evidence, line.kind, m_known, m_parameters);
            tried.noise = noise;
            tried.acquired.line = line;
            tried.acquired.fit.contrast =
                contrastOf(tones, tried.characters, m_rate_Hz / line.baud,
                           2.0 * PI * (line.mark_Hz - line.space_Hz) / m_rate_Hz);
        }
    }

    std::optional<Acquired> decide()
    {
        // What fits in strength alone, at another speed, has no form.
        const auto isBetter = [this](const Attempt& a, const Attempt& b) {
            if (isWhole(a.acquired.fit) != isWhole(b.acquired.fit))
                return isWhole(a.acquired.fit);
            if (isMultiple(a.acquired, b.acquired) || isMultiple(b.acquired, a.acquired))
                return isMultiple(a.acquired, b.acquired);
            if (hasForm(a.acquired.fit) != hasForm(b.acquired.fit))
                return hasForm(a.acquired.fit);
            return a.acquired.fit.score > b.acquired.fit.score;
        };
        std::stable_sort(m_attempts.begin(), m_attempts.end(), isBetter);
        if (m_attempts.empty() || !hasForm(m_attempts.front().acquired.fit))
            return std::nullopt;
        const auto count = std::min(static_cast<std::size_t>(m_own.refined), m_attempts.size());
        for (std::size_t i = 0; i < m_attempts.size(); ++i) {
            if (i < count || isFollowed(m_attempts[i].acquired))
                refine(m_attempts[i]);
        }
        // The phasing signals of a synchronous line are also one start-stop character again and
        // again.
        const bool isSynchronous =
            std::any_of(m_attempts.begin(), m_attempts.end(), [this](const Attempt& tried) {
                return tried.acquired.line.kind.code == Code::Ccir476 && isSure(tried.acquired);
            });
        if (isSynchronous)
            m_attempts.erase(std::remove_if(m_attempts.begin(), m_attempts.end(),
                                            [this](const Attempt& tried) {
                                                return tried.acquired.line.kind.code !=
                                                           Code::Ccir476 &&
                                                       tried.acquired.fit.commonest > m_own.often;
                                            }),
                             m_attempts.end());
        std::stable_sort(m_attempts.begin(), m_attempts.end(), isBetter);
        if (m_attempts.empty())
            return std::nullopt;
        // What data explain far better is none; then it may be the next one.
        for (const Attempt& tried : m_attempts) {
            const Acquired& best = tried.acquired;
            if (!isClear(best))
                return std::nullopt;
            if (isMachine(best))
                return best;
            const double over = overData(best, tried.noise);
            if (over >= (isFewTyped(best.fit) ? m_own.typedOverData : m_own.leastOverData))
                return best;
            if (over > m_own.hopelessOverData)
                return std::nullopt;
            m_dropped.push_back(&best);
        }
        return std::nullopt;
    }

    // Sure by itself, and without a rival.
    bool isClear(const Acquired& best) const
    {
        const bool isNoBetter =
            std::any_of(m_attempts.begin(), m_attempts.end(), [&](const Attempt& tried) {
                const Fit& own = tried.acquired.fit;
                return isFollowed(tried.acquired) &&
                       (best.fit.score <= own.score ||
                        best.fit.formed <= own.formed + m_own.toChange);
            });
        if (isNoBetter || !isKnown(best) || !isSure(best))
            return false;
        for (const Attempt& other : m_attempts) {
            const Fit& fit = other.acquired.fit;
            const bool isDropped =
                std::find(m_dropped.begin(), m_dropped.end(), &other.acquired) != m_dropped.end();
            if (isDropped || (isWhole(best.fit) && !isWhole(fit)) ||
                isMultiple(best, other.acquired))
                continue;
            if (!isSameText(other.acquired, best) &&
                fit.score > (hasForm(fit) ? best.fit.score - m_own.leastMargin
                                          : best.fit.score * m_own.mostStronger))
                return false;
        }
        return true;
    }

    const Parameters& m_parameters;
    const AcquisitionParameters& m_own;
    const demodulator::SampleHistory& m_history;
    const Spectrum& m_spectrum;
    double m_rate_Hz;
    const Known& m_known;
    const Line* m_followed;
    std::int64_t m_begin;
    std::int64_t m_end;
    double m_span_s;
    std::vector<Attempt> m_attempts;
    std::vector<const Acquired*> m_dropped; // of them
};

} // namespace

std::optional<Acquired> acquire(const Input& input, const Known& known, std::int64_t begin,
                                std::int64_t end, const Line* followed)
{
    return Search(input, known, begin, end, followed).run();
}

} // namespace teleprinter
