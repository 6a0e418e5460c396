// SPDX-License-Identifier: MIT
// A mark of the last seconds, as the trackers of level, tone and phase see it.
#pragma once

#include <complex>

namespace demodulator {

struct HeardMark
{
    double length_steps = 0.0;
    double end_s = 0.0;        ///< before now: its age
    double middle_s = 0.0;     ///< the same of its middle
    std::complex<double> sum;  ///< of its steps: the matched filter's output
    std::complex<double> turn; ///< sum of each step times the conjugate of that `lag_s` before
    double lag_s = 0.0;
    double wholeTurns = 0.0;   ///< within the lag, which the angle of `turn` does not show
    double tone_Hz = 0.0;      ///< expected in its middle: what 0 Hz stands for in its steps
    double cycles = 0.0;       ///< phase of that tone there
    double offset_Hz = 0.0;    ///< its tone less the one expected, from step to step
    double bend_Hz = 0.0;      ///< tone of its second half less that of its first
    double bendError_Hz = 0.0; ///< what noise does to that; 0: too short to say
    bool isForeign = false;    ///< its tone is far off: somebody else's
};

} // namespace demodulator
