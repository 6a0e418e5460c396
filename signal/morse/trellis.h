// SPDX-License-Identifier: MIT
// Stage: unit length and decisions together. The most probable sequence of marks and spaces, their
// lengths and the speed, by dynamic programming over all of them (a hidden semi-Markov model whose
// states are the speeds), against the rival explanation that there is nothing but noise.
#pragma once

#include "signal/morse/innerloops.h"
#include "signal/morse/livesteps.h"
#include "signal/morse/marklikelihood.h"
#include "signal/morse/parameters.h"
#include "signal/morse/pathmemory.h"
#include "signal/morse/recent.h"
#include "signal/morse/score.h"
#include "signal/morse/timingmodel.h"

#include <cstdint>
#include <optional>
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
    double margin = 0.0;   ///< log likelihood over any path at another speed, and over silence
    bool complete = false; ///< reaches back to where the signal began
};

class Trellis
{
public:
    /// Both must outlive the trellis.
    Trellis(const TimingModel& timing, const MarkLikelihood& likelihood,
            const TrellisParameters& parameters = {});

    /// From now on, any speed may follow a word. What is no Morse looks more like it then, so this
    /// is for signals that are known to be.
    void followAnySpeed() { m_followsAnySpeed = true; }

    /// Takes the newest step of the likelihood into account.
    void advance();

    /// The best path, back to the segment that holds `since_step`.
    Path path(std::int64_t since_step);

    /// How far back a path can reach.
    static constexpr std::int64_t KEPT_STEPS = PathMemory::KEPT_STEPS;

private:
    // What paths scored when one of their marks ended, or one of their gaps.
    struct Ends
    {
        RecentRows<Score> scores;           // by speed, then by how many steps ago
        std::vector<std::int64_t> lastLive; // by speed: step of the last that was alive
        LiveRows liveRows;                  // by speed
        Recent<Score> best;                 // of all speeds, by step
        LiveSteps live;                     // of all speeds
    };

    // Lengths that some path asks for, and what all paths of such a length have in common.
    struct Lengths
    {
        std::vector<Score> offsets; // by length in steps
        std::uint64_t groups = 0;   // of LANES lengths, a bit each
    };
    struct Weighed
    {
        Lengths marks, gaps;
    };

    // The best of these lengths, by speed.
    struct Peaks
    {
        std::vector<SummedRow> rows;
        std::vector<Peak> found;
    };

    // The best way on for one speed at this step.
    struct Choice
    {
        int score = NEVER;
        int length_steps = 0;
        bool isCarrier = false;
    };

    // What begins at other speeds with a word: its score, and their range.
    struct WordEnd
    {
        int score = NEVER;
        std::size_t first = 0, last = 0;
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
    void findPeaks(const Ends& from, const Lengths& lengths, LengthTable DurationTable::*kind,
                   std::vector<Score> LengthTable::*table, Peaks& peaks) const;
    Total chooseMarks();
    Total chooseGaps(Idle& idle);
    void endMarks(int cut);
    WordEnd wordEnd();
    void endGaps(int cut, const Idle& idle);
    double unit_steps(Speed speed) const;
    std::vector<Open> openPaths() const;
    Front front() const;
    void renewTrunk();

    const TimingModel& m_timing;
    const MarkLikelihood& m_likelihood;
    TrellisParameters m_parameters;
    std::vector<Score> m_start; // by speed: log probability that a signal begins with it

    std::int64_t m_now = 0;
    unsigned m_keptFor = 0; // version of the timing model
    Ends m_marks, m_gaps;
    Total m_reference = 0;              // of the scores of this step
    Recent<std::uint32_t> m_references; // of those of each step, its last 32 bits
    std::size_t m_longestMark = 0;      // that some path asks for now, in steps
    std::size_t m_longestGap = 0;
    std::vector<std::int32_t> m_ratios; // by length, of marks that end now
    Weighed m_weighed;                  // relative to the reference
    Peaks m_peaks;                      // room for them
    std::vector<Choice> m_mark, m_gap;  // by speed: the mark, the gap that ends now
    // By speed, of marks that begin now: scores of the gaps before them, with room on both sides;
    // the best score, and where it came from.
    std::vector<std::int32_t> m_gapScores, m_begins, m_beginsFrom;
    PathMemory m_memory;
    Recent<GapEnd> m_gapEnds; // by step
    Carrier m_carrier;
    bool m_followsAnySpeed = false;
};

} // namespace demodulator
