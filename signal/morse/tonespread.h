// SPDX-License-Identifier: MIT
// Stage: how steady is the tone? A transmitter that chirps or wobbles changes its tone within its
// marks, so that the phase of a mark holds together for a moment only.
#pragma once

#include "signal/morse/heardmark.h"
#include "signal/morse/parameters.h"

#include <vector>

namespace demodulator {

/// Root mean squares over the recent marks, without what noise adds. 0 unless many of them change:
/// another station's marks are steady, and a few that were put together wrongly do not count.
struct ToneSpread
{
    double within_Hz = 0.0; ///< how much the tone changes from one half of a mark to the other
    double off_Hz = 0.0;    ///< how far it is from the tone expected
};

/// `former` when too few marks were heard to say.
ToneSpread toneSpread(const std::vector<HeardMark>& marks, const ToneSpread& former,
                      const ToneParameters& parameters);

} // namespace demodulator
