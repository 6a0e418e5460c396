// SPDX-License-Identifier: MIT
// Stage: follow the tone. A straight line through the tones of the last marks, each weighted with
// how well it is known, its slope held near zero.
#pragma once

#include "signal/morse/heardmark.h"
#include "signal/morse/parameters.h"

#include <vector>

namespace demodulator {

/// The tone now, when it was last taken for `tone_Hz`. `signal` and `noise` are the power of a step
/// with the key down and the variance that noise gives it.
double trackTone(const std::vector<HeardMark>& marks, double tone_Hz, double signal, double noise,
                 const ToneParameters& parameters);

} // namespace demodulator
