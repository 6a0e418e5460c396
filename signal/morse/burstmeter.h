// SPDX-License-Identifier: MIT
// Stage: crashes of static and clicks. They are wide, so that the power beside the tone
// distinguishes them from keying, and shows how much of the power at the tone is theirs.
#pragma once

#include "signal/morse/parameters.h"

namespace demodulator {

class BurstMeter
{
public:
    /// `usualRest` is a first guess: the noise of a step.
    BurstMeter(const BurstParameters& parameters, double step_s, double usualRest);

    /// The noise that a burst gives this step, 0 where there is none, infinite where the step was
    /// lost on the way. `rest` is the power beside the tone, `noise` the usual noise near it.
    double noiseOf(double rest, double noise);

private:
    BurstParameters m_parameters;
    double m_step_s;
    double m_steps = 0.0; // that were heard
    double m_usual;       // bursts cut off
    double m_mean = 0.0;
    double m_mutedShare = 0.5; // of time; nothing is known at first
    double m_mutedSteps = 0.0; // that came last
};

} // namespace demodulator
