// SPDX-License-Identifier: MIT
// Stage: the timing model of who keys. How long marks and spaces are in units, how much they vary,
// learnt from what was heard; and from that how probable a mark or space of some length is at each
// speed.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace demodulator {

enum class Kind : std::uint8_t {
    Dot,
    Dash,
    Carrier, ///< a mark too long for keying
    ElementGap,
    CharacterGap,
    WordGap,
    Silence, ///< longer than any gap between words that the tables hold
};

constexpr bool isMark(Kind kind)
{
    return kind <= Kind::Carrier;
}

/// Log probabilities of lengths at one speed; index = steps / stride.
struct DurationTable
{
    double unit_steps = 0.0;
    int stride = 1; ///< lengths and moments of slow keying are looked at less closely
    int firstMark = 0, firstGap = 0;
    std::vector<float> mark, gap;                 ///< of exactly this length
    std::vector<float> markSurvival, gapSurvival; ///< of at least this length
    std::vector<Kind> markKind, gapKind;          ///< the most probable kind of this length
};

class TimingModel
{
public:
    /// Speeds on a logarithmic scale; a told speed leaves those within 20 % of it.
    TimingModel(double step_s, std::optional<double> speed_wpm);

    std::size_t speeds() const { return m_tables.size(); }
    const DurationTable& table(std::size_t speed) const { return m_tables[speed]; }
    /// Log probability of a speed before anything is heard.
    double prior(std::size_t speed) const { return m_priors[speed]; }

    /// Somebody else keys now.
    void forget();
    /// A mark or space that was decided.
    void learn(Kind kind, double units);
    /// Puts what was learnt into the tables: into all when no unit is given, else at once only into
    /// those of similar speeds.
    void update(double unit_steps = 0.0);

    double mean(Kind kind) const { return m_models[static_cast<std::size_t>(kind)].mean; }
    /// Length in units from which on a gap ends a character, a word.
    double characterThreshold() const { return m_characterThreshold; }
    double wordThreshold() const { return m_wordThreshold; }

private:
    struct LengthModel
    {
        double mean;
        double deviation;
        double share;           // of all marks, of all gaps
        double rightTail = 1.0; // how much further it reaches to longer lengths
    };

    void learnGapStyle(double unit);
    void buildTable(DurationTable& table) const;
    double logDensity(Kind kind, double units, double resolution_units) const;

    std::vector<DurationTable> m_tables;
    std::vector<double> m_priors;
    std::vector<LengthModel> m_models; // by kind
    struct Memory
    {
        double weight;
        double sum;
        double squares;
    };
    std::vector<Memory> m_memory;
    std::deque<double> m_longGaps;
    unsigned m_updates = 0;
    double m_characterThreshold = 2.0;
    double m_wordThreshold = 5.0;
};

} // namespace demodulator
