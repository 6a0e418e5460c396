// SPDX-License-Identifier: MIT
#include "signal/band/parameters.h"

#include "signal/parameterrow.h"

namespace demodulator {

namespace {

std::vector<ParameterRow> rowsOf(BandParameters& parameters)
{
    return {
        PARAMETER_ROW(survey.noise_frames),
        PARAMETER_ROW(survey.newNoise_frames),
        PARAMETER_ROW(survey.least_frames),
        PARAMETER_ROW(survey.lowOneIn),
        PARAMETER_ROW(survey.search_frames),
        PARAMETER_ROW(survey.leastSigmas),
        PARAMETER_ROW(shadow.compared_frames),
        PARAMETER_ROW(shadow.clicksReach_Hz),
        PARAMETER_ROW(shadow.margin),
        PARAMETER_ROW(shadow.stronger),
        PARAMETER_ROW(shadow.keyDown),
        PARAMETER_ROW(shadow.negligible),
        PARAMETER_ROW(shadow.leastExcess),
        PARAMETER_ROW(pair.heard_s),
        PARAMETER_ROW(pair.mean_s),
        PARAMETER_ROW(pair.leastOpposition),
        PARAMETER_ROW(pair.sure),
        PARAMETER_ROW(pair.doubtful),
        PARAMETER_ROW(pair.leastKeyed_s),
        PARAMETER_ROW(pair.nearest_Hz),
        PARAMETER_ROW(pair.own_Hz),
        PARAMETER_ROW(pair.mostMerged_Hz),
        PARAMETER_ROW(pair.largestRatio),
        PARAMETER_ROW(teleprinter.most),
        PARAMETER_ROW(teleprinter.within_s),
        PARAMETER_ROW(teleprinter.notAgain_s),
        PARAMETER_ROW(teleprinter.mostTones),
        PARAMETER_ROW(teleprinter.own_Hz),
        PARAMETER_ROW(teleprinter.between_Hz),
        PARAMETER_ROW(teleprinter.heard_s),
        PARAMETER_ROW(teleprinter.mostBeside_Hz),
        PARAMETER_ROW(teleprinter.leastBeside_Hz),
        PARAMETER_ROW(change.leastPause_s),
        PARAMETER_ROW(change.leastPause_units),
        PARAMETER_ROW(change.judgedMarks),
        PARAMETER_ROW(change.leastMarks),
        PARAMETER_ROW(change.kept_marks),
        PARAMETER_ROW(change.leastTone_Hz),
        PARAMETER_ROW(change.leastLevel_dB),
        PARAMETER_ROW(change.deviations),
        PARAMETER_ROW(change.afterLast_s),
        PARAMETER_ROW(admission.refusedFor_s),
        PARAMETER_ROW(admission.leastOfStrongest),
        PARAMETER_ROW(admission.leastOver_s),
        PARAMETER_ROW(admission.beforeResumed_s),
        PARAMETER_ROW(admission.answerSilence_s),
        PARAMETER_ROW(admission.answerSilence_units),
        PARAMETER_ROW(admission.answerReach_Hz),
        PARAMETER_ROW(admission.answerLevel),
        PARAMETER_ROW(admission.remembered_s),
        PARAMETER_ROW(admission.comesBack_Hz),
        PARAMETER_ROW(admission.leastCandidates),
        PARAMETER_ROW(admission.candidatesPerSignal),
    };
}

} // namespace

bool setParameter(BandParameters& parameters, const std::string& name, double value)
{
    return setByName(rowsOf(parameters), name, value) ||
           setParameter(parameters.signal, name, value);
}

} // namespace demodulator
