// SPDX-License-Identifier: MIT
// How the paths of a search came to where they are, so that the best of them can be followed back:
// of every end of a mark or gap its length, and what was before it.
#pragma once

#include "signal/morse/timingmodel.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace demodulator {

/// A score since the beginning of time, in units of a Score.
using Total = std::int64_t;
/// Of no path.
constexpr Total IMPOSSIBLE = -(Total{1} << 60);

/// Index of a speed of the timing model.
using Speed = std::int16_t;

/// A silence that paths may have ended in.
struct Idle
{
    std::int64_t since_step = 0; ///< this is what silence goes back to from here on
    Total score = 0;
    Speed speed = -1; ///< of the path that ended; -1: of a silence since ever
    std::int64_t markEnd = 0;
};

/// A place on a path: the end of a mark or of a gap.
struct Place
{
    bool mark = false;
    Speed speed = 0;
    std::int64_t step = 0;
};

/// A segment of a path.
struct Piece
{
    Place end;
    Place begin;
    Kind kind = Kind::Silence;
    bool first = false; ///< nothing came before: it has no length, and silence scored `silence`
    Total silence = 0;
};

class PathMemory
{
public:
    /// How far back a path can be followed.
    static constexpr std::int64_t KEPT_STEPS = 2048;
    /// The trunk is to be renewed every so many steps.
    static constexpr std::int64_t TRUNK_STEPS = 128;
    /// Speeds to both sides that a hand changes to.
    static constexpr int NEIGHBOURS = 2;

    /// Where the mark or gap that ends at a step came from, in 16 bits; 0 is none. Lengths are less
    /// than KEPT_STEPS.
    using Way = std::uint16_t;
    static Way ofMark(int length_steps);
    static Way ofCarrier(int length_steps);
    /// The gap may have been at another speed than the mark behind it: `speedOffset` is the index
    /// of its speed less that of the mark's.
    static Way ofGap(int speedOffset, int length_steps);
    /// The gap of endWord() at this step.
    static Way ofWord();
    static Way ofSilence();
    static Way ofBeginning();

    /// The timing model must outlive it.
    explicit PathMemory(const TimingModel& timing);

    /// Steps come one after the other.
    void begin(std::int64_t step);
    void endMark(std::size_t speed, Way way) { at(m_marks, speed, m_now) = way; }
    void endGap(std::size_t speed, Way way) { at(m_gaps, speed, m_now) = way; }
    /// A word may end with this gap, and another speed follow: one for all paths of this step.
    void endWord(Speed speed, int length_steps);
    /// The best silence at this step; it counts where it is better than the last one.
    void rest(Idle idle);
    const Idle& idle() const { return m_idle.back(); }

    /// Older steps are remembered of those paths alone that end at these places: by then most of
    /// them have run together into one trunk.
    void renewTrunk(const std::vector<Place>& places);

    /// The segments before a place, the newest first, back to the one that begins at `horizon` or
    /// before, or to where they are forgotten.
    std::vector<Piece> trace(Place place, std::int64_t horizon) const;

private:
    struct ByEnd
    {
        using is_transparent = void;
        static std::tuple<std::int64_t, Speed, bool> key(const Place& place)
        {
            return {place.step, place.speed, place.mark};
        }
        bool operator()(const Piece& a, const Piece& b) const { return key(a.end) < key(b.end); }
        bool operator()(const Piece& a, const Place& b) const { return key(a.end) < key(b); }
        bool operator()(const Place& a, const Piece& b) const { return key(a) < key(b.end); }
    };

    // Ends of marks and gaps that are remembered at each speed.
    static constexpr std::size_t KEPT_WAYS = 512;

    struct Word
    {
        Speed speed = 0;
        int length_steps = 0;
    };

    static std::size_t indexOf(std::size_t speed, std::int64_t step)
    {
        return speed * KEPT_WAYS + static_cast<std::size_t>(step) % KEPT_WAYS;
    }
    static Way& at(std::vector<Way>& ways, std::size_t speed, std::int64_t step)
    {
        return ways[indexOf(speed, step)];
    }
    const Idle& idleAt(std::int64_t step) const;
    std::optional<Piece> before(const Place& place) const;

    const TimingModel& m_timing;
    std::int64_t m_now = 0;
    std::vector<Way> m_marks, m_gaps; // by speed and step
    std::vector<Word> m_words;        // by step
    std::deque<Idle> m_idle;          // oldest first
    std::set<Piece, ByEnd> m_trunk;   // of all paths, what lies further back than those
};

} // namespace demodulator
