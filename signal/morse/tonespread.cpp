// SPDX-License-Identifier: MIT
#include "signal/morse/tonespread.h"

#include <algorithm>
#include <cmath>

namespace demodulator {

ToneSpread toneSpread(const std::vector<HeardMark>& marks, const ToneSpread& former,
                      const ToneParameters& parameters)
{
    unsigned count = 0;
    unsigned bent = 0;
    double within = 0.0;
    double off = 0.0;
    for (const HeardMark& mark : marks) {
        if (mark.end_s > parameters.span_s || !(mark.bendError_Hz > 0.0))
            continue;
        const double bend = mark.bend_Hz * mark.bend_Hz - mark.bendError_Hz * mark.bendError_Hz;
        ++count;
        bent += bend > 0.0 ? 1 : 0;
        within += bend;
        // Half of the change is on either side of the mean.
        off += mark.offset_Hz * mark.offset_Hz + 0.25 * bend;
    }
    if (count < parameters.spreadMarks)
        return former;
    if (bent < parameters.bentShare * count || !(within > 0.0))
        return {};
    return {std::sqrt(within / count), std::sqrt(std::max(0.0, off / count))};
}

} // namespace demodulator
