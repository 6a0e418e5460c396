// SPDX-License-Identifier: MIT
// Stage: unit length and decisions together. The most probable sequence of marks and spaces, their
// lengths and the speed, by dynamic programming over all of them (a hidden semi-Markov model whose
// states are the speeds), against the rival explanation that there is nothing but noise.
#pragma once

#include "signal/morse/innerloops.h"
#include "signal/morse/marklikelihood.h"
#include "signal/morse/parameters.h"
#include "signal/morse/recent.h"
#include "signal/morse/score.h"
#include "signal/morse/timingmodel.h"

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace demodulator {

struct Segment
{
    Kind kind;
    std::int64_t begin_step;
    std::int64_t end_step; ///< of the last segment of a path: how far it has come
    double unit_steps;
};

/// The most probable explanation of all that was heard.
struct Path
{
    std::vector<Segment> segments; ///< oldest first; the last one is still going on
    double gain = 0.0;             ///< log likelihood over noise alone, since the path began
    double margin = 0.0;           ///< log likelihood over any path at another speed
    bool complete = false;         ///< reaches back to where the signal began
};

class Trellis
{
public:
    /// Both must outlive the trellis.
    Trellis(const TimingModel& timing, const MarkLikelihood& likelihood,
            const TrellisParameters& parameters = {});

    /// Takes the newest step of the likelihood into account.
    void advance();

    /// The best path, back to the segment that holds `since_step`.
    Path path(std::int64_t since_step);

    /// How far back a path can reach.
    static constexpr std::int64_t KEPT_STEPS = 2048;

private:
    using Total = std::int64_t; // a score since the beginning of time, in units of a Score
    using Speed = std::int16_t; // index of a speed of the timing model
    static constexpr Total IMPOSSIBLE = -(Total{1} << 60);

    // Steps at which some path was alive, the newest first: a bit a step.
    class LiveSteps
    {
    public:
        void push();
        void setNewest() { m_words[0] |= 1; }
        /// A bit for each of the first groups of LANES steps, set where one of them is alive.
        std::uint64_t groups(std::size_t count) const;

    private:
        std::array<std::uint64_t, 12> m_words{};
    };

    // What paths scored when one of their marks ended, or one of their gaps.
    struct Ends
    {
        RecentRows<Score> scores;           // by speed, then by how many steps ago
        std::vector<std::int64_t> lastLive; // by speed: step of the last that was alive
        Recent<Score> best;                 // of all speeds, by step
        LiveSteps live;
        std::vector<std::uint16_t> backs; // by speed and step: where such a path came from
    };

    // Lengths that some path asks for, and what all paths of such a length have in common.
    struct Lengths
    {
        std::vector<Score> offsets; // by length in steps
        std::vector<Run> runs;
    };
    struct Weighed
    {
        Lengths marks, gaps;
    };

    // The best way on for one speed at this step.
    struct Choice
    {
        int score = NEVER;
        std::uint16_t back = 0; // its length in steps, and whether it is a carrier
    };

    // A path that has ended in silence.
    struct Idle
    {
        std::int64_t since_step = 0; // this is what silence goes back to from here on
        Total score = 0;
        Speed speed = -1; // -1: of a silence since ever
        std::int64_t markEnd = 0;
    };

    // A gap that ended, the best of all speeds.
    struct GapEnd
    {
        Total score = IMPOSSIBLE;
        Speed speed = 0;
        bool afterMark = false; // not the first of a transmission: its speed means something
    };

    struct Carrier
    {
        Total score = IMPOSSIBLE;
        Speed speed = 0;
        std::int64_t begin = 0;
        bool afterMark = false;
    };

    // A place on a path, at the end of a mark or of a gap, and the segment that ends there.
    struct Place
    {
        bool mark = false;
        Speed speed = 0;
        std::int64_t step = 0;
    };
    struct Piece
    {
        Place end;
        Place begin;
        Kind kind = Kind::Silence;
        bool first = false; // nothing came before: it has no length, and silence scored `silence`
        Total silence = 0;
    };
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

    // The best mark or gap that goes on at one speed.
    struct Open
    {
        Total score = IMPOSSIBLE;
        Place last;
    };
    // The best of all that is going on.
    struct Front
    {
        Total score = 0;
        Total rival = 0; // best at another speed, or silence
        std::optional<Place> last;
        Kind kind = Kind::Silence; // of what goes on since
    };

    static Ends endsFor(const TimingModel& timing);
    void keepEnough();
    void open(Ends& ends);
    void weighMarks();
    void followCarrier();
    Total carrierEndingNow() const;
    void weighLengths(std::uint32_t reference, Weighed& weighed) const;
    void weighLengths(const Ends& from, std::size_t longest, const std::int32_t* ratios,
                      std::uint32_t reference, Lengths& lengths) const;
    static Choice choose(const Score* scores, const Lengths& lengths,
                         const std::vector<Score>& table);
    Total chooseMarks();
    Total chooseGaps(Idle& idle);
    void endMarks(int cut);
    void endGaps(int cut, const Idle& idle);
    std::uint16_t& back(Ends& ends, std::size_t speed, std::int64_t step) const;
    const Idle& idleAt(std::int64_t step) const;

    double unit_steps(Speed speed) const;
    std::vector<Open> openPaths() const;
    Front front() const;
    void renewTrunk();
    std::optional<Piece> pieceBefore(const Place& place) const;
    std::vector<Piece> trace(const Front& front, std::int64_t horizon) const;

    const TimingModel& m_timing;
    const MarkLikelihood& m_likelihood;
    TrellisParameters m_parameters;
    std::vector<Score> m_start; // by speed: log probability that a signal begins with it

    std::int64_t m_now = 0;
    Ends m_marks, m_gaps;
    Total m_reference = 0;              // of the scores of this step
    Recent<std::uint32_t> m_references; // of those of each step, its last 32 bits
    std::size_t m_longestMark = 0;      // that some path asks for now, in steps
    std::size_t m_longestGap = 0;
    std::vector<std::int32_t> m_ratios; // by length, of marks that end now
    Weighed m_weighed;                  // relative to the reference
    std::vector<Choice> m_mark, m_gap;  // by speed: the mark, the gap that ends now
    std::deque<Idle> m_idle;            // oldest first
    Recent<GapEnd> m_gapEnds;           // by step
    Carrier m_carrier;
    std::set<Piece, ByEnd> m_trunk; // of all paths, what lies further back than `backs`
};

} // namespace demodulator
