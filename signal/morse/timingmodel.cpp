// SPDX-License-Identifier: MIT
#include "signal/morse/timingmodel.h"

#include "signal/morse/innerloops.h"
#include "signal/timing.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

std::size_t index(Kind kind)
{
    return static_cast<std::size_t>(kind);
}

// Student's t, as LengthDensity has it.
double student(double x, double scale)
{
    const double width = 1.0 + x * x / STUDENT_DEGREES;
    return 1.0 / (STUDENT_NORM * scale * width * width * width);
}

double densityAt(const TimingParameters::Length& length, double units)
{
    double x = (units - length.mean_units) / length.deviation_units;
    if (x > 0.0)
        x /= length.rightTail;
    return length.share * student(x, length.deviation_units * 0.5 * (1.0 + length.rightTail));
}

} // namespace

Kind DurationTable::markKind(std::int64_t length_steps) const
{
    return static_cast<double>(length_steps) < mark.changes[0] ? Kind::Dot : Kind::Dash;
}

Kind DurationTable::gapKind(std::int64_t length_steps) const
{
    const auto length = static_cast<double>(length_steps);
    if (length < gap.changes[0])
        return Kind::ElementGap;
    return length < gap.changes[1] ? Kind::CharacterGap : Kind::WordGap;
}

TimingModel::TimingModel(double step_s, std::optional<double> speed_wpm,
                         const TimingParameters& parameters)
    : m_parameters(parameters)
    , m_step_s(step_s)
{
    forget();
    double fastest_wpm = parameters.fastest_wpm;
    double slowest_wpm = parameters.slowest_wpm;
    if (speed_wpm) {
        fastest_wpm = *speed_wpm * parameters.knownTolerance;
        slowest_wpm = *speed_wpm / parameters.knownTolerance;
    }
    double total = 0.0;
    for (double speed = fastest_wpm; speed >= slowest_wpm; speed /= parameters.speedRatio) {
        DurationTable table;
        table.unit_steps = unitOf_s(speed) / step_s;
        m_tables.push_back(table);
        const double x =
            std::log(speed / speed_wpm.value_or(parameters.usual_wpm)) / parameters.usualDeviation;
        m_priors.push_back(-0.5 * x * x);
        total += std::exp(-0.5 * x * x);
    }
    for (double& prior : m_priors)
        prior -= std::log(total);
    update(0.0);
}

void TimingModel::forget()
{
    m_lengths[index(Kind::Dot)] = m_parameters.dot;
    m_lengths[index(Kind::Dash)] = m_parameters.dash;
    m_lengths[index(Kind::ElementGap)] = m_parameters.elementGap;
    m_lengths[index(Kind::CharacterGap)] = m_parameters.characterGap;
    m_lengths[index(Kind::WordGap)] = m_parameters.wordGap;
    m_longGaps.clear();
    m_learntUnit = 1.0;
    m_evenShare = m_parameters.evenShare;
    const double weight = m_parameters.priorWeight;
    for (std::size_t kind = 0; kind < KINDS; ++kind) {
        const double mean = m_lengths[kind].mean_units;
        const double deviation = m_lengths[kind].deviation_units;
        m_memory[kind] = {weight, weight * mean, weight * (mean * mean + deviation * deviation)};
    }
}

void TimingModel::learn(Kind kind, double units)
{
    learnEvenness(kind, units);
    if (kind == Kind::CharacterGap || kind == Kind::WordGap) {
        m_longGaps.push_back(units);
        if (m_longGaps.size() > m_parameters.keptGaps)
            m_longGaps.pop_front();
        return;
    }
    if (kind != Kind::Dot && kind != Kind::Dash && kind != Kind::ElementGap)
        return;
    const Length& length = m_lengths[index(kind)];
    const double farthest = m_parameters.farthest_deviations * length.deviation_units;
    const double bounded =
        std::clamp(units, length.mean_units - farthest, length.mean_units + farthest);
    Memory& memory = m_memory[index(kind)];
    const double keep = 1.0 - 1.0 / m_parameters.memory;
    memory.weight = memory.weight * keep + 1.0;
    memory.sum = memory.sum * keep + bounded;
    memory.squares = memory.squares * keep + bounded * bounded;
}

void TimingModel::update(double unit_steps, double dot)
{
    m_expectedEven = dot < m_parameters.evenDot ? m_evenShare : 0.0;
    learnMoments(Kind::Dot);
    learnMoments(Kind::Dash);
    learnMoments(Kind::ElementGap);
    m_learntUnit = learnUnit();
    learnGapStyle(m_learntUnit);
    m_characterThreshold = crossing(Kind::ElementGap, Kind::CharacterGap, 0.0);
    m_wordThreshold = crossing(Kind::CharacterGap, Kind::WordGap, 0.0);
    ++m_version;
    if (unit_steps > 0.0)
        m_resolution_units = m_parameters.resolution_steps / unit_steps;
    const bool all = !(unit_steps > 0.0) || ++m_updates % m_parameters.updatesOfAll == 0;
    for (DurationTable& table : m_tables) {
        if (all || std::fabs(std::log(table.unit_steps / unit_steps)) < m_parameters.nearSpeed)
            buildTable(table);
    }
}

// How a machine keys this kind.
TimingModel::Length TimingModel::evenLength(Kind kind, double resolution_units) const
{
    double units = 1.0;
    if (kind == Kind::Dash || kind == Kind::CharacterGap)
        units = 3.0;
    else if (kind == Kind::WordGap)
        units = 7.0;
    return {units, std::hypot(m_parameters.evenDeviation * units, resolution_units),
            m_lengths[index(kind)].share};
}

void TimingModel::learnEvenness(Kind kind, double units)
{
    if (kind == Kind::Carrier || kind == Kind::Silence)
        return;
    const double even =
        m_evenShare * densityAt(evenLength(kind, m_resolution_units), units / m_learntUnit);
    const double uneven =
        (1.0 - m_evenShare) * densityAt(lengthSeen(kind, m_resolution_units), units);
    const double keep = 1.0 - 1.0 / m_parameters.evenMemory;
    m_evenShare = std::clamp(keep * m_evenShare + (1.0 - keep) * even / (even + uneven),
                             m_parameters.leastEvenShare, m_parameters.mostEvenShare);
}

void TimingModel::learnMoments(Kind kind)
{
    Length& length = m_lengths[index(kind)];
    const Memory& memory = m_memory[index(kind)];
    length.mean_units = memory.sum / memory.weight;
    const double variance = memory.squares / memory.weight - length.mean_units * length.mean_units;
    length.deviation_units = std::max(std::sqrt(std::max(variance, 0.0)),
                                      kind == Kind::Dash ? m_parameters.leastDashDeviation_units
                                                         : m_parameters.leastDeviation_units);
}

// The unit is half of a dot with its gap: where they say that it is longer than that of the speed
// that they were heard at, the lengths of all the others are fewer units.
double TimingModel::learnUnit()
{
    Length& dot = m_lengths[index(Kind::Dot)];
    Length& gap = m_lengths[index(Kind::ElementGap)];
    Length& dash = m_lengths[index(Kind::Dash)];
    const double unit = std::clamp(0.5 * (dot.mean_units + gap.mean_units), m_parameters.leastUnit,
                                   m_parameters.mostUnit);
    const double most = m_parameters.mostWeight_units;
    const double weight = std::clamp(0.5 * (dot.mean_units - gap.mean_units) / unit, -most, most);
    dot.mean_units = 1.0 + weight;
    gap.mean_units = 1.0 - weight;
    dash.mean_units = std::clamp(dash.mean_units / unit, m_parameters.shortestDash_units,
                                 m_parameters.longestDash_units);
    return unit;
}

void TimingModel::learnGapStyle(double unit)
{
    if (m_longGaps.size() < m_parameters.leastGaps)
        return;
    const double textbookCharacter = m_parameters.characterGap.mean_units;
    const double textbookWord = m_parameters.wordGap.mean_units;
    const double textbookRatio = textbookWord / textbookCharacter;
    double best = 0.0;
    double bestCharacter = textbookCharacter;
    double bestWord = textbookWord;
    for (const double character : m_parameters.characterGaps_units) {
        for (const double ratio : m_parameters.wordRatios) {
            const double scale =
                std::log(character / textbookCharacter) / m_parameters.characterGapDeviation;
            const double skew = std::log(ratio / textbookRatio) / m_parameters.wordRatioDeviation;
            double fit = std::exp(-0.5 * (scale * scale + skew * skew));
            const double word = character * ratio;
            const double characterWidth = m_parameters.characterGapWidth * character;
            const double wordWidth = m_parameters.wordGapWidth * word;
            for (const double heard : m_longGaps) {
                const double gap = heard / unit;
                const double asCharacter =
                    student((gap - character) / characterWidth, characterWidth);
                const double asWord = student((gap - word) / wordWidth, wordWidth);
                fit *= (1.0 - m_parameters.wordGapShare) * asCharacter +
                       m_parameters.wordGapShare * asWord + m_parameters.strayGap;
            }
            if (fit > best) {
                best = fit;
                bestCharacter = character;
                bestWord = word;
            }
        }
    }
    const double width = m_parameters.learntGapDeviation;
    Length& characterGap = m_lengths[index(Kind::CharacterGap)];
    Length& wordGap = m_lengths[index(Kind::WordGap)];
    characterGap.mean_units = bestCharacter;
    characterGap.deviation_units = width * bestCharacter;
    wordGap.mean_units = bestWord;
    wordGap.deviation_units = width * bestWord;
}

TimingModel::Length TimingModel::lengthSeen(Kind kind, double resolution_units) const
{
    Length length = m_lengths[index(kind)];
    length.deviation_units = std::hypot(length.deviation_units, resolution_units);
    return length;
}

// The length in units, between the means of two kinds, from which the longer one is likelier.
double TimingModel::crossing(Kind shorter, Kind longer, double resolution_units) const
{
    const Length first = lengthSeen(shorter, resolution_units);
    const Length second = lengthSeen(longer, resolution_units);
    double units = first.mean_units;
    while (units < second.mean_units && densityAt(first, units) > densityAt(second, units))
        units += m_parameters.threshold_units;
    return units;
}

void TimingModel::buildTable(DurationTable& table)
{
    const double longestGap_steps =
        std::min(m_lengths[index(Kind::WordGap)].mean_units * m_parameters.longestGap_wordGaps *
                     table.unit_steps,
                 m_parameters.longestGap_s / m_step_s);
    buildLengths(table.mark, table, m_parameters.longestMark_units * table.unit_steps,
                 std::max(m_parameters.shortestMark_units * table.unit_steps,
                          m_parameters.shortestMark_steps),
                 {Kind::Dot, Kind::Dash});
    buildLengths(
        table.gap, table, longestGap_steps,
        std::max(m_parameters.shortestGap_units * table.unit_steps, m_parameters.shortestGap_steps),
        {Kind::ElementGap, Kind::CharacterGap, Kind::WordGap});
}

void TimingModel::buildLengths(LengthTable& lengths, const DurationTable& table,
                               double longest_steps, double shortest_steps,
                               std::initializer_list<Kind> kinds)
{
    const double spacing_units = 1.0 / table.unit_steps;
    const double resolution_units = m_parameters.resolution_steps * spacing_units;
    lengths.count = static_cast<std::size_t>(longest_steps) + 1;
    m_density.assign(lengths.count, 1e-30F);
    for (const Kind kind : kinds) {
        const auto add = [&](const Length& length, double share) {
            raiseToDensity(
                {static_cast<float>(length.mean_units), static_cast<float>(length.deviation_units),
                 static_cast<float>(length.rightTail),
                 static_cast<float>(share * length.share / table.unit_steps)}, // per step
                static_cast<float>(spacing_units), m_density.data(), lengths.count);
        };
        add(lengthSeen(kind, resolution_units), 1.0 - m_expectedEven);
        add(evenLength(kind, m_parameters.evenResolution_steps * spacing_units), m_expectedEven);
    }
    m_logarithm.resize(lengths.count);
    const auto fill = [&](std::vector<Score>& scores) {
        logarithms(m_density.data(), m_logarithm.data(), lengths.count);
        scores.assign(wholeLanes(lengths.count), NEVER);
        for (std::size_t i = 1; i < lengths.count; ++i)
            scores[i] = static_cast<Score>(std::lrint(
                std::max(float{NEVER}, std::min(0.0F, m_logarithm[i] * SCORES_PER_NAT))));
    };
    fill(lengths.exactly);
    const auto shortest = static_cast<std::size_t>(std::lround(shortest_steps));
    std::fill_n(lengths.exactly.begin(), std::min(shortest, lengths.exactly.size()), NEVER);

    auto remaining = static_cast<float>(m_parameters.beyondTable);
    for (std::size_t i = lengths.count; i-- > 0;) {
        const float here = m_density[i];
        m_density[i] = remaining;
        remaining += here;
    }
    fill(lengths.atLeast);
    lengths.atLeast[0] = 0;

    lengths.changes.clear();
    for (const Kind* kind = kinds.begin(); kind + 1 != kinds.end(); ++kind)
        lengths.changes.push_back(crossing(*kind, kind[1], resolution_units) * table.unit_steps);
}

} // namespace demodulator
