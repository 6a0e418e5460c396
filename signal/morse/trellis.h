// SPDX-License-Identifier: MIT
// Stage: unit length and decisions together. The most probable sequence of marks and spaces, their
// lengths and the speed, by dynamic programming over all of them (a hidden semi-Markov model whose
// states are the speeds), against the rival explanation that there is nothing but noise.
#pragma once

#include "signal/morse/marklikelihood.h"
#include "signal/morse/timingmodel.h"

#include <cstdint>
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
    Trellis(const TimingModel& timing, const MarkLikelihood& likelihood);

    /// Takes the newest step of the likelihood into account.
    void advance();

    /// The best path, back to the segment that holds `since_step`.
    Path path(std::int64_t since_step) const;

    /// How far back a path can reach.
    static constexpr std::int64_t KEPT_STEPS = 2048;

private:
    struct MarkBack
    {
        std::int16_t length;
        Kind kind;
    };
    struct GapBack
    {
        std::int16_t length; // 0: out of the silence
        std::int16_t speed;
        Kind kind;
    };
    struct Idle
    {
        float score = 0.0F;
        std::int16_t speed = -1; // of the path that ended in this silence, -1: never any
        std::int64_t markEnd = 0;
    };
    struct Entry
    {
        float score = 0.0F;
        std::int16_t speed = 0;
    };
    struct Carrier
    {
        float score = 0.0F;
        std::int16_t speed = 0;
        std::int64_t begin = 0;
        bool afterMark = false; // not the first of a transmission: its speed means something
    };

    static std::size_t slot(std::int64_t step)
    {
        return static_cast<std::size_t>(step) & (KEPT_STEPS - 1);
    }
    std::size_t cell(std::size_t speed, std::int64_t step) const
    {
        return speed * static_cast<std::size_t>(KEPT_STEPS) + slot(step);
    }
    void computeRatios(std::int64_t now);
    float ratio(std::int64_t length) const;
    void renormalise();

    const TimingModel& m_timing;
    const MarkLikelihood& m_likelihood;
    std::int64_t m_now = 0;
    std::int64_t m_finest = 0;        // all lengths up to here are computed, then every second one
    std::vector<float> m_ratios;      // by length, of marks that end now
    std::vector<float> m_mark, m_gap; // scores of paths whose mark or gap ends at a step
    std::vector<MarkBack> m_markBack;
    std::vector<GapBack> m_gapBack;
    std::vector<std::int64_t> m_lastMark, m_lastGap; // step of the last score that counts
    std::vector<Idle> m_idle;                        // by step
    std::vector<Entry> m_bestGap;                    // by step: best gap that ends there
    std::vector<Carrier> m_carrier;                  // by block
    std::vector<float> m_entering;                   // best gap that ends now, by speed
    std::vector<std::int16_t> m_enteringLength;
};

} // namespace demodulator
