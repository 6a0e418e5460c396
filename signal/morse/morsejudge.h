// SPDX-License-Identifier: MIT
// Stage: is this Morse at all? Teleprinters, speech, music and dialling tones switch tones on and
// off as well, but their lengths are not one and three units, or their tones do not stand still.
#pragma once

#include "signal/morse/parameters.h"

namespace demodulator {

class MorseJudge
{
public:
    explicit MorseJudge(const JudgeParameters& parameters);

    struct Mark
    {
        double length_units = 0.0;
        double unit_steps = 0.0;
        double gap_units = 0.0; ///< before it, 0 before the first
        bool isForeign = false; ///< its tone is not the signal's
    };
    void mark(const Mark& mark);

    enum class Verdict {
        Unsure, ///< too little was heard, or it is odd, or only dots
        Dashes, ///< nothing odd, but no dots
        Morse,  ///< dots, dashes, and gaps within a character
        Other,  ///< so many marks do not belong in Morse that it is no chance
    };
    Verdict verdict() const;
    enum class Side {
        Unknown,
        Mark,
        Space,
    };
    /// If it is one of two tones in turn, which one: the space has the longest marks, since it is
    /// on between words, and the mark has the longest gaps.
    Side side() const;
    /// Marks that were judged; older ones count less.
    double marks() const { return m_marks; }

private:
    bool isMore(double count, double share, double deviations) const;
    bool isOdd(double deviations, double mostAlone) const;

    JudgeParameters m_parameters;
    // Counts that forget.
    double m_marks = 0.0;
    double m_between = 0.0; // neither dot nor dash
    double m_long = 0.0;    // longer than any dash
    double m_wide = 0.0;    // after a gap longer than any dash
    double m_foreign = 0.0;
    double m_dots = 0.0;
    double m_dashes = 0.0;
    double m_innerGaps = 0.0;
    // Of dots: lengths and their squares, the scatter that the grid of steps adds left out.
    double m_dotLengths = 0.0;
    double m_dotSquares = 0.0;
};

} // namespace demodulator
