// SPDX-License-Identifier: MIT
#include "signal/morse/trellis.h"

#include "signal/morse/innerloops.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

// A steady tone is weighed at the end of blocks of this length, not at every step: it lasts for
// many.
constexpr std::int64_t CARRIER_BLOCK_STEPS = 32;
// Scores stay near their reference: it is moved when the best of a step is farther from it.
constexpr int NEAR_REFERENCE = 20 * SCORES_PER_NAT;

int bounded(std::int64_t score)
{
    return static_cast<int>(std::clamp<std::int64_t>(score, NEVER, 2 * std::int64_t{MOST_SCORE}));
}

} // namespace

Trellis::Trellis(const TimingModel& timing, const MarkLikelihood& likelihood,
                 const TrellisParameters& parameters)
    : m_timing(timing)
    , m_likelihood(likelihood)
    , m_parameters(parameters)
    , m_marks(endsFor(timing))
    , m_gaps(endsFor(timing))
    , m_references(m_marks.best.kept(), 0)
    , m_mark(timing.speeds())
    , m_gap(timing.speeds())
    , m_gapScores(timing.speeds() + 2 * std::size_t{PathMemory::NEIGHBOURS}, NEVER)
    , m_begins(timing.speeds())
    , m_beginsFrom(timing.speeds())
    , m_memory(timing)
    , m_gapEnds(2 * CARRIER_BLOCK_STEPS, GapEnd())
{
    for (std::size_t speed = 0; speed < timing.speeds(); ++speed) {
        m_start.push_back(toScore(parameters.start + timing.prior(speed)));
    }
    keepEnough();
}

Trellis::Ends Trellis::endsFor(const TimingModel& timing)
{
    constexpr std::size_t ASKED_STEPS = 44 * LANES; // groups of steps that are known to be alive
    return {RecentRows<Score>(timing.speeds(), NEVER),
            std::vector<std::int64_t>(timing.speeds(), -static_cast<std::int64_t>(ASKED_STEPS)),
            LiveRows(timing.speeds()), Recent<Score>(ASKED_STEPS, NEVER), LiveSteps()};
}

// Tables grow when wide gaps are learnt.
void Trellis::keepEnough()
{
    if (m_keptFor == m_timing.version())
        return;
    m_keptFor = m_timing.version();
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const DurationTable& table = m_timing.table(speed);
        m_gaps.scores.keep(speed, table.mark.exactly.size());
        m_marks.scores.keep(speed, table.gap.exactly.size());
    }
}

void Trellis::advance()
{
    m_now = m_likelihood.end();
    m_memory.begin(m_now);
    keepEnough();
    m_references.push(0);
    open(m_marks);
    open(m_gaps);
    weighMarks();
    if (m_now % CARRIER_BLOCK_STEPS == 0)
        followCarrier();

    Idle idle;
    Total best = 0;
    // The best of the last step is mostly near enough to be the reference. Where it is not, the
    // best that was found relative to it is tried.
    for (;;) {
        weighLengths(static_cast<std::uint32_t>(m_reference), m_weighed);
        idle = m_memory.idle();
        best = std::max(chooseMarks(), chooseGaps(idle));
        best = std::max(best, idle.score);
        if (m_now % CARRIER_BLOCK_STEPS == 0)
            best = std::max(best, m_carrier.score);
        if (std::abs(best - m_reference) <= NEAR_REFERENCE)
            break;
        m_reference = best;
    }
    m_memory.rest(idle);

    const int cut = static_cast<int>(best - m_reference) - toScore(m_parameters.beam);
    m_references.data()[0] = static_cast<std::uint32_t>(m_reference);
    endMarks(cut);
    endGaps(cut, m_memory.idle());
    if (m_now % PathMemory::TRUNK_STEPS == 0)
        renewTrunk();
}

// Makes room for this step.
void Trellis::open(Ends& ends)
{
    ends.live.push();
    ends.liveRows.push();
    ends.best.push(NEVER);
    ends.scores.push();
}

// The evidence for marks that end now, of lengths that some path asks for.
void Trellis::weighMarks()
{
    m_longestMark = 0;
    m_longestGap = 0;
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const DurationTable& table = m_timing.table(speed);
        const std::size_t mark = table.mark.count - 1;
        const std::size_t gap = table.gap.count - 1;
        if (m_now - m_gaps.lastLive[speed] <= static_cast<std::int64_t>(mark))
            m_longestMark = std::max(m_longestMark, mark);
        if (m_now - m_marks.lastLive[speed] <= static_cast<std::int64_t>(gap))
            m_longestGap = std::max(m_longestGap, gap);
    }
    // The shortest are always asked for: a carrier may end at any step of a block.
    constexpr std::size_t BLOCK_GROUPS = CARRIER_BLOCK_STEPS / LANES;
    m_ratios.resize(std::max(wholeLanes(m_longestMark + 1), BLOCK_GROUPS * LANES));
    const std::size_t groups = m_ratios.size() / LANES;
    const std::uint64_t live =
        m_gaps.live.groups(groups) | ((std::uint64_t{1} << BLOCK_GROUPS) - 1);
    for (std::size_t group = 0; group < groups; ++group) {
        std::size_t end = group;
        while (end < groups && (live >> end & 1) != 0)
            ++end;
        if (end > group)
            m_likelihood.ratios(static_cast<std::int64_t>(group * LANES),
                                static_cast<std::int64_t>((end - group) * LANES),
                                m_ratios.data() + group * LANES);
        group = end;
    }
}

// A steady tone, whichever the speed, goes on for a block, or begins.
void Trellis::followCarrier()
{
    const Level& level = m_likelihood.level();
    const bool weak = level.signal * level.dot_steps < m_parameters.carrierDot * level.noise;
    const auto ratio = [this](std::int64_t length) {
        return static_cast<Total>(m_likelihood.ratio(length) * SCORES_PER_NAT);
    };
    if (m_carrier.score > IMPOSSIBLE) {
        m_carrier.score += ratio(CARRIER_BLOCK_STEPS);
        if (!weak)
            m_carrier.score += toScore(m_parameters.carrierGoesOn);
        if (m_carrier.score < m_memory.idle().score + NEVER)
            m_carrier.score = IMPOSSIBLE;
    }
    for (std::int64_t age = CARRIER_BLOCK_STEPS; age < 2 * CARRIER_BLOCK_STEPS && !weak; ++age) {
        // This step has not been given its end yet.
        const GapEnd& gap = m_gapEnds[static_cast<std::size_t>(age - 1)];
        if (gap.score <= IMPOSSIBLE)
            continue;
        const Total score = gap.score + toScore(m_parameters.carrier) + ratio(age);
        if (score > m_carrier.score)
            m_carrier = {score, gap.speed, m_now - age, gap.afterMark};
    }
    m_carrier.begin = std::max(m_carrier.begin, m_now - KEPT_STEPS / 2);
}

Total Trellis::carrierEndingNow() const
{
    const std::int64_t sinceBlock = m_now % CARRIER_BLOCK_STEPS;
    if (sinceBlock == 0 || m_carrier.score <= IMPOSSIBLE)
        return m_carrier.score;
    return m_carrier.score + m_ratios[static_cast<std::size_t>(sinceBlock)] +
           toScore(m_parameters.carrierEnds);
}

void Trellis::weighLengths(std::uint32_t reference, Weighed& weighed) const
{
    weighLengths(m_gaps, m_longestMark, m_ratios.data(), reference, weighed.marks);
    weighLengths(m_marks, m_longestGap, nullptr, reference, weighed.gaps);
}

void Trellis::weighLengths(const Ends& from, std::size_t longest, const std::int32_t* ratios,
                           std::uint32_t reference, Lengths& lengths) const
{
    // No path that began with less can come near the best.
    const auto least = static_cast<Score>(-NEAR_REFERENCE - toScore(m_parameters.beam));
    const std::size_t groups = wholeLanes(longest + 1) / LANES;
    lengths.offsets.resize(groups * LANES);
    lengths.groups = weighGroups(from.live.groups(groups), groups, reference, m_references.data(),
                                 ratios, from.best.data(), least, lengths.offsets.data());
    if (ratios)
        lengths.offsets[0] = NEVER; // a mark has a length
}

// The best length for each speed.
void Trellis::findPeaks(const Ends& from, const Lengths& lengths, LengthTable DurationTable::*kind,
                        std::vector<Score> LengthTable::*table, Peaks& peaks) const
{
    peaks.rows.resize(m_timing.speeds());
    peaks.found.resize(m_timing.speeds());
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const std::vector<Score>& scores = m_timing.table(speed).*kind.*table;
        const std::size_t known = scores.size() / LANES;
        const std::uint64_t inTable =
            known < 64 ? (std::uint64_t{1} << known) - 1 : ~std::uint64_t{0};
        peaks.rows[speed] = {from.scores.row(speed), scores.data(),
                             lengths.groups & from.liveRows.groups(speed) & inTable};
    }
    peaksOfSums(peaks.rows.data(), peaks.rows.size(), lengths.offsets.data(), peaks.found.data());
}

// The best mark that ends now, for each speed; the best of all of them.
Total Trellis::chooseMarks()
{
    const int steady = bounded(carrierEndingNow() - m_reference);
    const std::int64_t carried = m_now - m_carrier.begin;
    findPeaks(m_gaps, m_weighed.marks, &DurationTable::mark, &LengthTable::exactly, m_peaks);
    int best = NEVER;
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const Peak& peak = m_peaks.found[speed];
        Choice& choice = m_mark[speed];
        choice = {peak.score, static_cast<int>(peak.index), false};
        // Only at the end of a block is it known of a carrier that comes first that it is none.
        if (m_carrier.speed == static_cast<Speed>(speed) && steady > choice.score &&
            (m_carrier.afterMark || m_now % CARRIER_BLOCK_STEPS == 0) &&
            static_cast<double>(carried) >
                m_parameters.leastCarrier_units * m_timing.table(speed).unit_steps)
            choice = {steady, static_cast<int>(carried), true};
        best = std::max(best, choice.score);
    }
    return best > NEVER ? m_reference + best : IMPOSSIBLE;
}

// The best gap that ends now, for each speed, and the best that has become a silence.
Total Trellis::chooseGaps(Idle& idle)
{
    findPeaks(m_marks, m_weighed.gaps, &DurationTable::gap, &LengthTable::exactly, m_peaks);
    int best = NEVER;
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const Peak& peak = m_peaks.found[speed];
        m_gap[speed] = {peak.score, static_cast<int>(peak.index), false};
        best = std::max(best, peak.score);
        const LengthTable& gap = m_timing.table(speed).gap;
        const std::size_t longest = gap.count - 1;
        if (m_now - m_marks.lastLive[speed] > static_cast<std::int64_t>(longest))
            continue;
        const Score score = m_marks.scores.row(speed)[longest];
        if (score > NEVER) {
            const Total silent =
                m_reference + score + m_weighed.gaps.offsets[longest] + gap.atLeast[longest];
            if (silent > idle.score)
                idle = {0, silent, static_cast<Speed>(speed),
                        m_now - static_cast<std::int64_t>(longest)};
        }
    }
    return best > NEVER ? m_reference + best : IMPOSSIBLE;
}

void Trellis::endMarks(int cut)
{
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const Choice& choice = m_mark[speed];
        if (choice.score <= NEVER || choice.score < cut)
            continue;
        const auto score = static_cast<Score>(choice.score);
        m_marks.scores.setNewest(speed, score);
        m_marks.best.data()[0] = std::max(m_marks.best[0], score);
        m_marks.lastLive[speed] = m_now;
        m_marks.liveRows.setNewest(speed);
        m_marks.live.setNewest();
        m_memory.endMark(speed, choice.isCarrier ? PathMemory::ofCarrier(choice.length_steps)
                                                 : PathMemory::ofMark(choice.length_steps));
    }
}

// The best path on which a word may end now, at the price of another speed, and the speeds that may
// follow.
Trellis::WordEnd Trellis::wordEnd()
{
    if (!m_followsAnySpeed)
        return {};
    const auto best =
        std::max_element(m_gap.begin(), m_gap.end(),
                         [](const Choice& a, const Choice& b) { return a.score < b.score; });
    const auto speed = static_cast<std::size_t>(best - m_gap.begin());
    // At half the speed, or twice it, a gap between words looks like one between characters.
    if (best->score <= NEVER ||
        m_timing.table(speed).gapKind(best->length_steps) == Kind::ElementGap)
        return {};
    m_memory.endWord(static_cast<Speed>(speed), best->length_steps);
    const std::size_t reach = m_parameters.farthestSpeeds;
    return {best->score + toScore(m_parameters.anySpeed), speed - std::min(speed, reach),
            std::min(m_timing.speeds(), speed + reach + 1)};
}

// A mark may follow a gap at the same speed or at another one, a silence, or nothing.
void Trellis::endGaps(int cut, const Idle& idle)
{
    constexpr int NEIGHBOURS = PathMemory::NEIGHBOURS;
    constexpr std::int32_t NO_GAP = NEIGHBOURS + 1;
    constexpr std::int32_t ANY = NEIGHBOURS + 2;
    const std::int32_t changes[NEIGHBOURS + 1] = {0, toScore(m_parameters.nextSpeed),
                                                  toScore(m_parameters.secondSpeed)};
    const std::size_t speeds = m_timing.speeds();
    const int silence = bounded(idle.score - m_reference);
    const int resume = toScore(m_parameters.resume);
    const int resumeAtOther = toScore(m_parameters.resumeAtOther);
    const auto resumed = [&](std::size_t speed) {
        return idle.speed < 0 ? NEVER
                              : silence + resume +
                                    resumeAtOther * std::abs(idle.speed - static_cast<int>(speed));
    };
    for (std::size_t speed = 0; speed < speeds; ++speed) {
        m_begins[speed] = std::max(silence + m_start[speed], resumed(speed));
        m_beginsFrom[speed] = NO_GAP;
        m_gapScores[speed + NEIGHBOURS] = m_gap[speed].score;
    }
    raiseFromNeighbours(m_gapScores.data() + NEIGHBOURS, changes, NEIGHBOURS, speeds,
                        m_begins.data(), m_beginsFrom.data());
    const WordEnd word = wordEnd();
    for (std::size_t speed = word.first; speed < word.last; ++speed) {
        if (word.score > m_begins[speed]) {
            m_begins[speed] = word.score;
            m_beginsFrom[speed] = ANY;
        }
    }
    GapEnd best;
    int most = NEVER;
    for (std::size_t speed = 0; speed < speeds; ++speed) {
        const int score = m_begins[speed];
        if (score < cut || score <= NEVER)
            continue;
        const int from = m_beginsFrom[speed];
        const bool isAfterMark = from != NO_GAP;
        m_gaps.scores.setNewest(speed, static_cast<Score>(score));
        m_gaps.lastLive[speed] = m_now;
        m_gaps.liveRows.setNewest(speed);
        m_gaps.live.setNewest();
        if (from == ANY) {
            m_memory.endGap(speed, PathMemory::ofWord());
        } else if (isAfterMark) {
            const Choice& gap =
                m_gap[static_cast<std::size_t>(static_cast<std::int64_t>(speed) + from)];
            m_memory.endGap(speed, PathMemory::ofGap(from, gap.length_steps));
        } else {
            m_memory.endGap(speed, resumed(speed) > silence + m_start[speed]
                                       ? PathMemory::ofSilence()
                                       : PathMemory::ofBeginning());
        }
        if (score > most) {
            most = score;
            best = {m_reference + score, static_cast<Speed>(speed), isAfterMark};
        }
    }
    m_gaps.best.data()[0] = static_cast<Score>(most);
    m_gapEnds.push(best);
}

double Trellis::unit_steps(Speed speed) const
{
    return m_timing.table(static_cast<std::size_t>(speed)).unit_steps;
}

std::vector<Trellis::Open> Trellis::openPaths() const
{
    Weighed weighed;
    weighLengths(static_cast<std::uint32_t>(m_reference), weighed);
    Peaks gaps;
    Peaks marks;
    findPeaks(m_marks, weighed.gaps, &DurationTable::gap, &LengthTable::atLeast, gaps);
    findPeaks(m_gaps, weighed.marks, &DurationTable::mark, &LengthTable::atLeast, marks);
    std::vector<Open> paths(m_timing.speeds());
    for (std::size_t speed = 0; speed < m_timing.speeds(); ++speed) {
        const bool inGap = gaps.found[speed].score >= marks.found[speed].score;
        const Peak& better = (inGap ? gaps : marks).found[speed];
        if (better.score > NEVER)
            paths[speed] = {m_reference + better.score,
                            {inGap, static_cast<Speed>(speed),
                             m_now - static_cast<std::int64_t>(better.index)}};
    }
    return paths;
}

// The best of: silence, a gap that goes on, a mark that goes on.
Trellis::Front Trellis::front() const
{
    const Idle& idle = m_memory.idle();
    const std::vector<Open> paths = openPaths();
    Front front;
    front.score = idle.score;
    for (const Open& path : paths) {
        if (path.score > front.score) {
            front.score = path.score;
            front.last = path.last;
        }
    }
    front.rival = idle.score;
    for (const Open& path : paths) {
        if (front.last &&
            std::fabs(std::log(unit_steps(path.last.speed) / unit_steps(front.last->speed))) >
                m_parameters.otherSpeed)
            front.rival = std::max(front.rival, path.score);
    }
    if (front.last && !front.last->mark)
        front.kind = Kind::Dash;
    else if (!front.last && idle.speed >= 0)
        front.last = Place{true, idle.speed, idle.markEnd};

    Total steady = m_carrier.score;
    if (m_now % CARRIER_BLOCK_STEPS != 0)
        steady += m_ratios[static_cast<std::size_t>(m_now % CARRIER_BLOCK_STEPS)];
    if (steady > front.score) {
        front.score = steady;
        front.last = Place{false, m_carrier.speed, m_carrier.begin};
        front.kind = Kind::Carrier;
    }
    return front;
}

void Trellis::renewTrunk()
{
    std::vector<Place> places;
    for (const Open& path : openPaths()) {
        if (path.score > IMPOSSIBLE)
            places.push_back(path.last);
    }
    const Idle& idle = m_memory.idle();
    if (idle.speed >= 0)
        places.push_back({true, idle.speed, idle.markEnd});
    if (m_carrier.score > IMPOSSIBLE)
        places.push_back({false, m_carrier.speed, m_carrier.begin});
    m_memory.renewTrunk(places);
}

Path Trellis::path(std::int64_t since_step)
{
    keepEnough(); // what was learnt since the last step may have made tables longer
    const std::int64_t horizon = std::max({since_step, m_now - KEPT_STEPS + 4, std::int64_t{0}});
    const Front front = this->front();
    Path path;
    if (!front.last)
        return path;
    path.margin = static_cast<double>(front.score - front.rival) / SCORES_PER_NAT;
    for (const Piece& piece : m_memory.trace(*front.last, horizon)) {
        if (piece.first) {
            path.complete = true;
            path.gain = static_cast<double>(front.score - piece.silence) / SCORES_PER_NAT;
        } else {
            path.segments.push_back(
                {piece.kind, piece.begin.step, piece.end.step, unit_steps(piece.begin.speed)});
        }
    }
    std::reverse(path.segments.begin(), path.segments.end());
    path.segments.push_back({front.kind, front.last->step, m_now, unit_steps(front.last->speed)});
    return path;
}

} // namespace demodulator
