// SPDX-License-Identifier: MIT
// Two tones of one transmitter that is shifted between them, as those of a teleprinter are: found
// by their amplitudes, which go against each other.
#pragma once

#include "signal/band/parameters.h"
#include "signal/band/stepbank.h"
#include "signal/band/survey.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace demodulator {

struct ShiftedPair
{
    double lower_Hz; ///< as near as a filter shows it, where the survey does not see the tone
    double upper_Hz;
    bool isSure; ///< otherwise chance may have made it of two hands that send at once
};

/// Has no state of its own. Not for use while the bank computes.
class ShiftedPairs
{
public:
    /// Bank and survey must outlive it.
    ShiftedPairs(const StepBank& bank, const Survey& survey, const PairParameters& parameters)
        : m_bank(bank)
        , m_survey(survey)
        , m_parameters(parameters)
    {
    }

    /// The pair to which what is heard at a tone belongs, in the last seconds before `end_step`.
    /// The tone need not be one of both: it may lie between them, or be what their edges leave
    /// beside them. Two hands make no pair: while one of them sends, the other goes on as before,
    /// with marks of its own or with none.
    std::optional<ShiftedPair> find(double tone_Hz, std::int64_t end_step) const;

private:
    // What the amplitude of a filter has over its mean of some elements around.
    struct Swing
    {
        double tone_Hz;
        std::vector<float> values; // by step
        double power;              // mean square
    };
    struct Opposed
    {
        const Swing* lower;
        const Swing* upper;
        double opposition; // correlation with its sign turned: 1 where exactly one is on
    };

    std::vector<Swing> swingsAround(double tone_Hz, std::int64_t end_step) const;
    Swing swingOf(double tone_Hz, std::vector<float> amplitudes) const;
    bool mayBePair(double tone_Hz, const Swing& lower, const Swing& upper) const;
    double steps(const Opposed& pair) const;
    double chance(const Opposed& pair, double steps) const;
    double toneNear(double tone_Hz) const;

    const StepBank& m_bank;
    const Survey& m_survey;
    PairParameters m_parameters;
};

} // namespace demodulator
