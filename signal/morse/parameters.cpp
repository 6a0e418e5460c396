// SPDX-License-Identifier: MIT
#include "signal/morse/parameters.h"

#include <cmath>
#include <variant>
#include <vector>

namespace demodulator {

namespace {

struct Row
{
    const char* name;
    std::variant<double*, int*, unsigned*> value;
};

// Every member of every part; the name is that of the member.
std::vector<Row> rowsOf(Parameters& parameters)
{
#define ROW(member)                                                                                \
    Row                                                                                            \
    {                                                                                              \
#member, &parameters.member                                                                \
    }
    return {
        ROW(finder.noiseNearest_Hz),
        ROW(finder.noiseFarthest_Hz),
        ROW(finder.beside_Hz),
        ROW(finder.leastSwing),
        ROW(finder.leastExcess),
        ROW(finder.farthestShift_Hz),
        ROW(finder.leastComplement),
        ROW(finder.opposite),
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
        ROW(burst.longestLoss_s),
        ROW(burst.mostLost),
        ROW(burst.formerNoise),
        ROW(burst.usual_s),
        ROW(burst.mean_s),
        ROW(likelihood.weaker),
        ROW(likelihood.stronger),
        ROW(likelihood.nearPrice),
        ROW(likelihood.nearFreedom),
        ROW(likelihood.faded),
        ROW(likelihood.fadedPrice),
        ROW(likelihood.fadedFreedom),
        ROW(likelihood.lossOfFreedom),
        ROW(likelihood.largestRatio),
        ROW(likelihood.driftingDot),
        ROW(likelihood.part_units),
        ROW(likelihood.shortestPart_steps),
        ROW(likelihood.driftPrice),
        ROW(likelihood.otherPhase),
        ROW(timing.fastest_wpm),
        ROW(timing.slowest_wpm),
        ROW(timing.speedRatio),
        ROW(timing.usual_wpm),
        ROW(timing.usualDeviation),
        ROW(timing.knownTolerance),
        ROW(timing.longestGap_s),
        ROW(timing.longestGap_wordGaps),
        ROW(timing.longestMark_units),
        ROW(timing.shortestMark_units),
        ROW(timing.shortestMark_steps),
        ROW(timing.shortestGap_units),
        ROW(timing.shortestGap_steps),
        ROW(timing.resolution_steps),
        ROW(timing.beyondTable),
        ROW(timing.priorWeight),
        ROW(timing.memory),
        ROW(timing.farthest_deviations),
        ROW(timing.leastDeviation_units),
        ROW(timing.leastDashDeviation_units),
        ROW(timing.leastUnit),
        ROW(timing.mostUnit),
        ROW(timing.mostWeight_units),
        ROW(timing.shortestDash_units),
        ROW(timing.longestDash_units),
        ROW(timing.keptGaps),
        ROW(timing.leastGaps),
        ROW(timing.characterGapDeviation),
        ROW(timing.wordRatioDeviation),
        ROW(timing.characterGapWidth),
        ROW(timing.wordGapWidth),
        ROW(timing.wordGapShare),
        ROW(timing.strayGap),
        ROW(timing.learntGapDeviation),
        ROW(timing.nearSpeed),
        ROW(timing.updatesOfAll),
        ROW(timing.dot.mean_units),
        ROW(timing.dot.deviation_units),
        ROW(timing.dot.share),
        ROW(timing.dot.rightTail),
        ROW(timing.dash.mean_units),
        ROW(timing.dash.deviation_units),
        ROW(timing.dash.share),
        ROW(timing.dash.rightTail),
        ROW(timing.elementGap.mean_units),
        ROW(timing.elementGap.deviation_units),
        ROW(timing.elementGap.share),
        ROW(timing.elementGap.rightTail),
        ROW(timing.characterGap.mean_units),
        ROW(timing.characterGap.deviation_units),
        ROW(timing.characterGap.share),
        ROW(timing.characterGap.rightTail),
        ROW(timing.wordGap.mean_units),
        ROW(timing.wordGap.deviation_units),
        ROW(timing.wordGap.share),
        ROW(timing.wordGap.rightTail),
        ROW(trellis.beam),
        ROW(trellis.start),
        ROW(trellis.resume),
        ROW(trellis.resumeAtOther),
        ROW(trellis.nextSpeed),
        ROW(trellis.secondSpeed),
        ROW(trellis.otherSpeed),
        ROW(trellis.carrier),
        ROW(trellis.leastCarrier_units),
        ROW(trellis.carrierEnds),
        ROW(trellis.carrierGoesOn),
        ROW(trellis.carrierDot),
        ROW(decision.review_s),
        ROW(decision.delay_s),
        ROW(decision.strongDot),
        ROW(decision.sureMargin),
        ROW(decision.leastDelay_s),
        ROW(decision.leastDelay_units),
        ROW(decision.confirmingGain),
        ROW(decision.leastMarks),
        ROW(decision.steady_s),
        ROW(decision.otherHand),
        ROW(decision.learning_s),
        ROW(judge.longestDot_units),
        ROW(judge.shortestDash_units),
        ROW(judge.longestDash_units),
        ROW(judge.longestInnerGap_units),
        ROW(judge.mostBetween),
        ROW(judge.mostLong),
        ROW(judge.mostForeign),
        ROW(judge.mostAlone),
        ROW(judge.usuallyAlone),
        ROW(judge.mostDotDeviation_units),
        ROW(judge.resolution_steps),
        ROW(judge.deviations),
        ROW(judge.strayTone_Hz),
        ROW(judge.strayErrors),
        ROW(judge.leastMarks),
        ROW(judge.memory_marks),
        ROW(attention.oddMarks),
        ROW(attention.refusedPerMark_s),
        ROW(attention.refused_s),
        ROW(attention.unsure_s),
        ROW(attention.loneMarks),
        ROW(attention.refusedWidth_Hz),
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
        ROW(attention.quickUnit_s),
        ROW(attention.quick_marks),
        ROW(attention.teleprinterUnit_s),
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
}

} // namespace

std::vector<std::string> parameterNames()
{
    Parameters parameters;
    std::vector<std::string> names;
    for (const Row& row : rowsOf(parameters))
        names.emplace_back(row.name);
    return names;
}

bool setParameter(Parameters& parameters, const std::string& name, double value)
{
    if (!std::isfinite(value))
        return false;
    for (const Row& row : rowsOf(parameters)) {
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
