// SPDX-License-Identifier: MIT
// Stage: follow the phase. Most transmitters key a steady oscillator, so that the phase of the next
// mark is known from the last ones; knowing it is worth a decibel or more to a weak signal. Where
// the phase is not steady this is noticed, and nothing is claimed to be known.
#pragma once

#include "signal/morse/heardmark.h"
#include "signal/morse/parameters.h"

#include <vector>

namespace demodulator {

struct PhaseEstimate
{
    double cycles = 0.0; ///< phase of the signal now
    double frequency_Hz = 0.0;
    /// How well the phase of a mark is known (von Mises), 0: not at all.
    double concentration = 0.0;
};

/// The phase now, from marks in order of time, with a first guess of the frequency. `noise` is the
/// variance that noise gives one step.
PhaseEstimate trackPhase(const std::vector<HeardMark>& marks, double frequency_Hz, double noise,
                         const PhaseParameters& parameters);

} // namespace demodulator
