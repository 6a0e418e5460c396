// SPDX-License-Identifier: MIT
// Stage: measure a mark. Its power and its tone, against the tone that was expected, and what noise
// does to them.
#pragma once

#include "signal/morse/expectedtone.h"
#include "signal/morse/heardmark.h"
#include "signal/morse/marklikelihood.h"
#include "signal/morse/parameters.h"
#include "signal/morse/tonespread.h"

#include <cstdint>

namespace demodulator {

class MarkMeter
{
public:
    /// Of a shorter mark much may be edge: its halves say nothing of its tone, nor it of the level.
    static constexpr std::int64_t SHORTEST_STEPS = 6;

    /// Steps and tone must outlive it; both count the same steps.
    MarkMeter(const MarkLikelihood& steps, const ExpectedTone& tone, double step_s,
              const ToneParameters& toneParameters, const JudgeParameters& judgeParameters);

    /// A mark that has ended, of the steps [begin, end) that are kept. Whose it is is not measured.
    HeardMark measured(std::int64_t begin_step, std::int64_t end_step) const;

    /// Belongs to another signal, whose tone is far off.
    bool isForeign(std::int64_t begin_step, std::int64_t end_step, const ToneSpread& spread) const;
    /// Its tone is farther off than that of a transmitter may be, and than noise explains.
    bool strays(std::int64_t begin_step, std::int64_t end_step, const ToneSpread& spread) const;

private:
    double offset_Hz(std::int64_t begin_step, std::int64_t end_step) const;
    double offsetError_Hz(std::int64_t length_steps, double signal) const;
    double wholeTurns(std::int64_t begin_step, std::int64_t end_step, const HeardMark& mark) const;

    const MarkLikelihood& m_steps;
    const ExpectedTone& m_tone;
    double m_step_s;
    ToneParameters m_toneParameters;
    JudgeParameters m_judgeParameters;
};

} // namespace demodulator
