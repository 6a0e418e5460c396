// SPDX-License-Identifier: MIT
#include "signal/teleprinter/parameters.h"

#include <cmath>
#include <variant>

namespace teleprinter {

namespace {

struct Row
{
    const char* name;
    std::variant<double*, float*, int*> value;
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
        ROW(spectrum.leastExcess),
        ROW(spectrum.mostUnequal),
        ROW(spectrum.knownTolerance_Hz),
        ROW(spectrum.knownShiftTolerance),
        ROW(spectrum.leastIndex),
        ROW(spectrum.mostMerged),
        ROW(spectrum.leastReach_Hz),
        ROW(spectrum.toneReach),
        ROW(spectrum.noiseReach_Hz),
        ROW(spectrum.noiseDistance),
        ROW(evidence.followed_s),
        ROW(evidence.steady_bits),
        ROW(evidence.leastStrength),
        ROW(evidence.mostStrength_per_s),
        ROW(framing.silenceBegins),
        ROW(framing.signalBegins),
        ROW(framing.character),
        ROW(framing.worthRefining),
        ROW(framing.doubted),
        ROW(framing.mostDoubted),
        ROW(framing.learntFrom),
        ROW(framing.leastLearnt),
        ROW(framing.remembered),
        ROW(framing.anyPause),
        ROW(tracking.leastScatter),
        ROW(tracking.centreDrift_Hz2),
        ROW(tracking.shiftDrift_Hz2),
        ROW(acquisition.leastCharacters),
        ROW(acquisition.leastFraming),
        ROW(acquisition.leastFramingMean),
        ROW(acquisition.leastScoreMean),
        ROW(acquisition.leastOccupied),
        ROW(acquisition.mostUnexplained),
        ROW(acquisition.tooOften),
        ROW(acquisition.often),
        ROW(acquisition.mostRegular),
        ROW(acquisition.leastMargin),
        ROW(acquisition.leastForm),
        ROW(acquisition.mostStronger),
        ROW(acquisition.toChange),
        ROW(acquisition.mostContrast),
        ROW(acquisition.steadyFirst),
        ROW(acquisition.costOfSteadyFirst),
        ROW(acquisition.refined),
        ROW(acquisition.rounds),
        ROW(acquisition.exclusion_s),
        ROW(acquisition.exclusion_bits),
        ROW(acquisition.leastExclusion),
        ROW(acquisition.mostPairs),
        ROW(startStop.span_s),
        ROW(startStop.ahead_s),
        ROW(startStop.leastAhead_characters),
        ROW(startStop.before_s),
        ROW(startStop.noise_s),
        ROW(startStop.lengthGain),
        ROW(startStop.mostLengthError),
        ROW(startStop.knownAfter),
        ROW(startStop.overAfter_s),
        ROW(startStop.idleAtMost_s),
        ROW(startStop.present_per_s),
        ROW(startStop.leastFramingMean),
        ROW(startStop.goodFrame),
        ROW(startStop.doubtful),
        ROW(timeDiversity.span_words),
        ROW(timeDiversity.before_s),
        ROW(timeDiversity.noise_s),
        ROW(timeDiversity.beginGain),
        ROW(timeDiversity.lengthGain),
        ROW(timeDiversity.knownAfter),
        ROW(timeDiversity.present),
        ROW(timeDiversity.presentTwice),
        ROW(timeDiversity.doubtful),
        ROW(timeDiversity.formless),
        ROW(timeDiversity.overAfter_s),
        ROW(timeDiversity.faded),
        ROW(timeDiversity.sureOrder),
        ROW(search.every_s),
        ROW(search.short_s),
        ROW(search.long_s),
        ROW(search.longEvery),
        ROW(search.waitGrows),
        ROW(search.longestWait_s),
        ROW(search.checkEvery_s),
        ROW(search.checks),
        ROW(search.heardAgain_s),
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

} // namespace teleprinter
