// SPDX-License-Identifier: MIT
// Stage of a rehearing: the complex amplitude of a signal at every step, from the marks on both
// sides of it. Fading is slower than keying, so that what a mark would be in a gap or a null is
// known from those before and after.
#pragma once

#include "signal/morse/parameters.h"

#include <complex>
#include <vector>

namespace demodulator {

struct HeardStep
{
    std::complex<double> value; ///< against the phase of the tone that was followed
    double noise = 0.0;         ///< its variance
    bool isMark = false;        ///< wholly within a mark; others say nothing of the amplitude
};

/// That of a mark at some step.
struct ExpectedAmplitude
{
    std::complex<double> mean;
    double variance = 0.0;
};

struct Amplitudes
{
    std::vector<ExpectedAmplitude> steps; ///< without any mark, all are 0
    double rate_per_s = 0.0;              ///< of the fading; after 2 / rate it is another one
    bool hasPhase = true;                 ///< false: only the magnitudes mean something
};

/// How fast the signal fades, and whether its phase goes on from mark to mark, is what explains the
/// marks best. `isUnsteady`: the tone changes within them. Cost grows with the number of steps.
Amplitudes smoothAmplitude(const std::vector<HeardStep>& steps, double step_s, bool isUnsteady,
                           const RehearingParameters& parameters);

} // namespace demodulator
