// SPDX-License-Identifier: MIT
#include "signal/morse/parameters.h"

#include <cmath>
#include <variant>

namespace demodulator {

namespace {

struct Row
{
    const char* name;
    std::variant<double*, int*, unsigned*> value;
};

} // namespace

bool setParameter(Parameters& parameters, const std::string& name, double value)
{
#define ROW(member)                                                                                \
    Row                                                                                            \
    {                                                                                              \
#member, &parameters.member                                                                \
    }
    const Row rows[] = {
        ROW(level.weakestRatio),
        ROW(level.span_s),
        ROW(level.memory_s),
        ROW(level.weakRatio),
        ROW(level.longestMemory),
        ROW(level.fastestFade_dB_per_s),
        ROW(tone.span_s),
        ROW(tone.memory_s),
        ROW(tone.leastError_Hz),
        ROW(tone.steepest_Hz_per_s),
        ROW(tone.gain),
        ROW(tone.largestPull_Hz),
        ROW(tone.largestRatio),
        ROW(tone.foreign_Hz),
        ROW(phase.weakestDot),
        ROW(phase.strongestDot),
        ROW(phase.leastMarks),
        ROW(phase.firstFrequencyError_Hz),
        ROW(phase.frequencyWalk_Hz),
        ROW(phase.phaseWalk),
        ROW(phase.leastError),
        ROW(phase.memory_marks),
        ROW(phase.leastCoherence),
        ROW(phase.largestConcentration),
        ROW(burst.burst),
        ROW(burst.muted),
        ROW(burst.usual_s),
        ROW(burst.mean_s),
        ROW(decision.review_s),
        ROW(decision.delay_s),
        ROW(decision.confirmingGain),
        ROW(decision.leastMarks),
        ROW(decision.steady_s),
        ROW(decision.otherHand),
        ROW(decision.learning_s),
        ROW(attention.search_s),
        ROW(attention.searchEvery_s),
        ROW(attention.heardAgain_s),
        ROW(attention.beforeFirst_s),
        ROW(attention.afterLast_s),
        ROW(attention.candidateLife_s),
        ROW(attention.louderCandidate),
        ROW(attention.sameTone_Hz),
        ROW(attention.sureMargin),
        ROW(attention.sureAfter_s),
        ROW(attention.sureAfter_marks),
        ROW(attention.heardFirst_s),
        ROW(attention.heardFirst_marks),
        ROW(attention.heardFirstAtMost_s),
        ROW(attention.rivalSilence_s),
        ROW(attention.rivalSilence_units),
        ROW(attention.ownTone_Hz),
        ROW(attention.neighbourPower),
        ROW(attention.strongerPower),
        ROW(attention.leastCompared_s),
        ROW(attention.mostCompared_s),
        ROW(attention.compareEvery_s),
        ROW(attention.otherTone_Hz),
        ROW(attention.noiseSpan_s),
    };
#undef ROW
    if (!std::isfinite(value))
        return false;
    for (const Row& row : rows) {
        if (name != row.name)
            continue;
        std::visit(
            [value](auto* member) {
                *member = static_cast<std::decay_t<decltype(*member)>>(value);
            },
            row.value);
        return true;
    }
    return false;
}

} // namespace demodulator
