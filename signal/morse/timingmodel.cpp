// SPDX-License-Identifier: MIT
#include "signal/morse/timingmodel.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

namespace {

constexpr double FASTEST_wpm = 64.0;
constexpr double SLOWEST_wpm = 5.0;
constexpr double SPEED_RATIO = 1.05;
constexpr double USUAL_wpm = 20.0;
constexpr double USUAL_DEVIATION = 0.5; // of the logarithm
constexpr double TOLD_TOLERANCE = 1.2;
constexpr double LARGEST_GAP_s = 2.6; // longer gaps are silence: the tables end
constexpr double LONGEST_DASH_units = 8.0;

// Nothing shorter can be told from a click, or from the edge of a strong signal beside ours.
constexpr double SHORTEST_MARK_steps = 3.0;
constexpr double SHORTEST_GAP_steps = 2.0;
constexpr double NEAR_SPEED = 0.25; // of the logarithm
constexpr unsigned UPDATES_OF_ALL = 16;
constexpr double RESOLUTION = 0.7; // deviation of a length, in steps, from the grid of steps
constexpr double MEMORY = 40.0;    // marks or gaps of a kind that are remembered
constexpr std::size_t KEPT_GAPS = 24;

// Unit steps below which every step counts, not every second one.
constexpr double FINE_UNIT_steps = 26.0;

std::size_t index(Kind kind)
{
    return static_cast<std::size_t>(kind);
}

// Student's t with 5 degrees of freedom: like a normal distribution, but one odd mark is no
// catastrophe.
double logStudent(double x, double scale)
{
    return -3.0 * std::log1p(x * x / 5.0) - std::log(2.634 * scale);
}

} // namespace

TimingModel::TimingModel(double step_s, std::optional<double> speed_wpm)
{
    forget();
    double fastest_wpm = FASTEST_wpm;
    double slowest_wpm = SLOWEST_wpm;
    if (speed_wpm) {
        fastest_wpm = *speed_wpm * TOLD_TOLERANCE;
        slowest_wpm = *speed_wpm / TOLD_TOLERANCE;
    }
    double total = 0.0;
    for (double speed = fastest_wpm; speed >= slowest_wpm; speed /= SPEED_RATIO) {
        DurationTable table;
        table.unit_steps = 1.2 / speed / step_s;
        table.stride = table.unit_steps < FINE_UNIT_steps ? 1 : 2;
        m_tables.push_back(table);
        const double x = std::log(speed / speed_wpm.value_or(USUAL_wpm)) / USUAL_DEVIATION;
        m_priors.push_back(-0.5 * x * x);
        total += std::exp(-0.5 * x * x);
    }
    for (double& prior : m_priors)
        prior -= std::log(total);
    update(0.0);
}

void TimingModel::forget()
{
    m_models = {
        {1.0, 0.22, 0.55}, // dot
        {3.0, 0.40, 0.45}, // dash
        {1.0, 1.0, 0.0},   // carrier: handled apart
        {1.0, 0.22, 0.60}, // between elements
        {3.0, 0.50, 0.32}, // between characters
        {7.0, 1.2, 0.08, 3.0}, {1.0, 1.0, 0.0},
    };
    m_memory.clear();
    m_longGaps.clear();
    for (const LengthModel& model : m_models) {
        constexpr double PRIOR_WEIGHT = 8.0;
        const double variance = model.deviation * model.deviation;
        m_memory.push_back({PRIOR_WEIGHT, PRIOR_WEIGHT * model.mean,
                            PRIOR_WEIGHT * (model.mean * model.mean + variance)});
    }
}

double TimingModel::logDensity(Kind kind, double units, double resolution_units) const
{
    const LengthModel& model = m_models[index(kind)];
    const double deviation =
        std::sqrt(model.deviation * model.deviation + resolution_units * resolution_units);
    double x = (units - model.mean) / deviation;
    if (x > 0.0)
        x /= model.rightTail;
    return std::log(model.share) + logStudent(x, deviation * 0.5 * (1.0 + model.rightTail));
}

void TimingModel::buildTable(DurationTable& table) const
{
    const double perIndex_units = table.stride / table.unit_steps;
    const double perStep = std::log(1.0 / table.unit_steps); // density per step
    const auto build = [&](std::vector<float>& logs, std::vector<float>& survival,
                           std::vector<Kind>& kinds, double longest_units,
                           std::initializer_list<Kind> choices) {
        const auto count = static_cast<std::size_t>(longest_units / perIndex_units) + 1;
        logs.assign(count, -1e9F);
        survival.assign(count, 0.0F);
        kinds.assign(count, *choices.begin());
        for (std::size_t i = 1; i < count; ++i) {
            const double units = static_cast<double>(i) * perIndex_units;
            double best = -1e9;
            for (const Kind kind : choices) {
                const double density = logDensity(kind, units, RESOLUTION * perIndex_units);
                if (density > best) {
                    best = density;
                    kinds[i] = kind;
                }
            }
            logs[i] = static_cast<float>(best + perStep);
        }
        double remaining = 0.02;
        for (std::size_t i = count; i-- > 1;) {
            survival[i] = static_cast<float>(std::min(0.0, std::log(remaining)));
            remaining += std::exp(static_cast<double>(logs[i])) * table.stride;
        }
    };
    const double longestGap_units = std::min(m_models[index(Kind::WordGap)].mean * 1.8,
                                             LARGEST_GAP_s / 0.004 / table.unit_steps);
    build(table.mark, table.markSurvival, table.markKind, LONGEST_DASH_units * 0.75,
          {Kind::Dot, Kind::Dash});
    build(table.gap, table.gapSurvival, table.gapKind, longestGap_units,
          {Kind::ElementGap, Kind::CharacterGap, Kind::WordGap});
    const auto first = [&](double units, double steps) {
        return static_cast<int>(
            std::lround(std::max(units / perIndex_units, steps / table.stride)));
    };
    table.firstMark = first(0.3, SHORTEST_MARK_steps);
    table.firstGap = first(0.25, SHORTEST_GAP_steps);
}

void TimingModel::learn(Kind kind, double units)
{
    if (kind == Kind::CharacterGap || kind == Kind::WordGap) {
        m_longGaps.push_back(units);
        if (m_longGaps.size() > KEPT_GAPS)
            m_longGaps.pop_front();
        return;
    }
    if (kind != Kind::Dot && kind != Kind::Dash && kind != Kind::ElementGap)
        return;
    const LengthModel& model = m_models[index(kind)];
    const double bounded =
        std::clamp(units, model.mean - 3.0 * model.deviation, model.mean + 3.0 * model.deviation);
    Memory& memory = m_memory[index(kind)];
    const double keep = 1.0 - 1.0 / MEMORY;
    memory.weight = memory.weight * keep + 1.0;
    memory.sum = memory.sum * keep + bounded;
    memory.squares = memory.squares * keep + bounded * bounded;
}

void TimingModel::learnGapStyle(double unit)
{
    if (m_longGaps.size() < 2)
        return;
    // Gaps between characters and words are the most personal of all: their lengths are chosen
    // from a few styles by how well those explain the last ones, the textbook's being likeliest.
    constexpr double CHARACTER_units[] = {2.3, 2.6, 3.0, 3.5, 4.1, 4.8, 5.6, 6.5, 7.6, 9.0, 11.0};
    constexpr double WORD_RATIOS[] = {1.7, 2.0, 2.33, 2.8, 3.4};
    double best = -1e9;
    double bestCharacter = 3.0;
    double bestWord = 7.0;
    for (const double character : CHARACTER_units) {
        for (const double ratio : WORD_RATIOS) {
            const double scale = std::log(character / 3.0) / 0.25;
            const double skew = std::log(ratio / 2.333) / 0.2;
            double sum = -0.5 * (scale * scale + skew * skew);
            const double word = character * ratio;
            for (const double heard : m_longGaps) {
                const double gap = heard / unit;
                const double a =
                    logStudent((gap - character) / (0.15 * character), 0.15 * character);
                const double b = logStudent((gap - word) / (0.18 * word), 0.18 * word);
                sum += std::log(0.8 * std::exp(a) + 0.2 * std::exp(b) + 1e-4);
            }
            if (sum > best) {
                best = sum;
                bestCharacter = character;
                bestWord = word;
            }
        }
    }
    m_models[index(Kind::CharacterGap)].mean = bestCharacter;
    m_models[index(Kind::CharacterGap)].deviation = 0.17 * bestCharacter;
    m_models[index(Kind::WordGap)].mean = bestWord;
    m_models[index(Kind::WordGap)].deviation = 0.17 * bestWord;
}

void TimingModel::update(double unit_steps)
{
    constexpr double LEAST_DEVIATIONS[] = {0.06, 0.1, 1.0, 0.06};
    for (const Kind kind : {Kind::Dot, Kind::Dash, Kind::ElementGap}) {
        LengthModel& model = m_models[index(kind)];
        const Memory& memory = m_memory[index(kind)];
        model.mean = memory.sum / memory.weight;
        const double variance = memory.squares / memory.weight - model.mean * model.mean;
        model.deviation = std::sqrt(std::max(variance, 0.0));
        model.deviation = std::max(model.deviation, LEAST_DEVIATIONS[index(kind)]);
    }
    // The unit is half of a dot with its gap: where they say that it is longer than the speed that
    // they were heard at, the lengths of all the others are fewer units.
    const double dot = m_models[index(Kind::Dot)].mean;
    const double gap = m_models[index(Kind::ElementGap)].mean;
    const double unit = std::clamp(0.5 * (dot + gap), 0.7, 1.4);
    const double weight = std::clamp(0.5 * (dot - gap) / unit, -0.5, 0.5);
    m_models[index(Kind::Dot)].mean = 1.0 + weight;
    m_models[index(Kind::ElementGap)].mean = 1.0 - weight;
    m_models[index(Kind::Dash)].mean =
        std::clamp(m_models[index(Kind::Dash)].mean / unit, 2.2, 5.0);
    learnGapStyle(unit);

    const auto crossing = [&](Kind shorter, Kind longer) {
        double units = m_models[index(shorter)].mean;
        const double end = m_models[index(longer)].mean;
        while (units < end && logDensity(shorter, units, 0.0) > logDensity(longer, units, 0.0))
            units += 0.05;
        return units;
    };
    m_characterThreshold = crossing(Kind::ElementGap, Kind::CharacterGap);
    m_wordThreshold = crossing(Kind::CharacterGap, Kind::WordGap);
    // Tables of speeds far from the one heard may stay behind for a while: they take most of the
    // time and are least likely to be used.
    const bool all = !(unit_steps > 0.0) || ++m_updates % UPDATES_OF_ALL == 0;
    for (DurationTable& table : m_tables) {
        if (all || std::fabs(std::log(table.unit_steps / unit_steps)) < NEAR_SPEED)
            buildTable(table);
    }
}

} // namespace demodulator
