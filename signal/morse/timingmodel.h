// SPDX-License-Identifier: MIT
// Stage: the timing model of who keys. How long marks and spaces are in units, how much they vary,
// learnt from what was heard; and from that how probable a mark or space of some length is at each
// speed.
#pragma once

#include "signal/morse/parameters.h"
#include "signal/morse/score.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
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

/// Log probabilities of lengths at one speed; index = steps. All are filled up with NEVER to whole
/// lanes.
struct LengthTable
{
    std::size_t count = 0;       ///< of lengths
    std::vector<Score> exactly;  ///< of this length; NEVER where it is too short
    std::vector<Score> atLeast;  ///< of this length or a longer one
    std::vector<double> changes; ///< lengths in steps from which the next kind is likelier
};

/// Marks and gaps at one speed.
struct DurationTable
{
    double unit_steps = 0.0;
    LengthTable mark, gap;

    /// The most probable kind of a mark or gap of this length.
    Kind markKind(std::int64_t length_steps) const;
    Kind gapKind(std::int64_t length_steps) const;
};

class TimingModel
{
public:
    /// Speeds on a logarithmic scale, the fastest first; of a known speed those near it.
    TimingModel(double step_s, std::optional<double> speed_wpm,
                const TimingParameters& parameters = {});

    std::size_t speeds() const { return m_tables.size(); }
    /// Changes when tables do.
    unsigned version() const { return m_version; }
    const DurationTable& table(std::size_t speed) const { return m_tables[speed]; }
    /// Log probability of a speed before anything is heard.
    double prior(std::size_t speed) const { return m_priors[speed]; }

    /// Somebody else keys now.
    void forget();
    /// A mark or space that was decided.
    void learn(Kind kind, double units);
    /// Puts what was learnt into the tables: into all when no unit is given, else at once only into
    /// those of similar speeds. `dot` is the energy of a dot over noise density.
    void update(double unit_steps = 0.0, double dot = std::numeric_limits<double>::infinity());

    double mean(Kind kind) const { return m_lengths[static_cast<std::size_t>(kind)].mean_units; }
    /// Length in units from which on a gap ends a character, a word.
    double characterThreshold() const { return m_characterThreshold; }
    double wordThreshold() const { return m_wordThreshold; }

private:
    using Length = TimingParameters::Length;
    struct Memory // of lengths in units
    {
        double weight, sum, squares;
    };
    static constexpr std::size_t KINDS = 7;

    Length evenLength(Kind kind, double resolution_units) const;
    void learnEvenness(Kind kind, double units);
    void learnMoments(Kind kind);
    double learnUnit();
    void learnGapStyle(double unit);
    double crossing(Kind shorter, Kind longer, double resolution_units) const;
    Length lengthSeen(Kind kind, double resolution_units) const;
    void buildTable(DurationTable& table);
    void buildLengths(LengthTable& lengths, const DurationTable& table, double longest_steps,
                      double shortest_steps, std::initializer_list<Kind> kinds);

    TimingParameters m_parameters;
    double m_step_s;
    std::vector<DurationTable> m_tables;
    std::vector<double> m_priors;
    std::array<Length, KINDS> m_lengths{}; // by kind
    std::array<Memory, KINDS> m_memory{};  // by kind
    std::deque<double> m_longGaps;         // between characters and words, in units
    double m_learntUnit = 1.0;             // in units of the speed that was heard
    double m_resolution_units = 0.05;      // of that speed
    double m_evenShare = 0.0;              // of lengths as a machine keys them
    double m_expectedEven = 0.0;           // the same, as the tables have it
    unsigned m_version = 0;
    unsigned m_updates = 0; // of one speed
    double m_characterThreshold = 2.0;
    double m_wordThreshold = 5.0;
    std::vector<float> m_density, m_logarithm; // room to build tables in
};

} // namespace demodulator
