// SPDX-License-Identifier: MIT
// What the stages behind the mixer work on: one short moment of one tone.
#pragma once

#include <complex>

namespace demodulator {

/// A moment of STEP_s around a tone. Scale is free as long as value, rest and the noise that a
/// chain is given share it.
struct Step
{
    std::complex<double> value; ///< half the tone's amplitude, and its phase against `tone_Hz`
    double rest = 0.0;          ///< power beside the tone, as the noise that it adds to a step
    double tone_Hz = 0.0;       ///< what it was mixed with; its phase never jumps
    double floor = 0.0;         ///< noise near the tone around that time, 0: not known
};

} // namespace demodulator
