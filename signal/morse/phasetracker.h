// SPDX-License-Identifier: MIT
// Stage: follow the phase. Most transmitters key a steady oscillator, so that the phase of the next
// mark is known from the last ones; knowing it is worth a decibel or more to a weak signal. Where
// the phase is not steady this is noticed, and nothing is claimed to be known.
#pragma once

#include <complex>
#include <vector>

namespace demodulator {

/// A mark as the phase tracker sees it.
struct PhaseMark
{
    double time_s;            ///< of its middle
    double cycles;            ///< phase of the mixing tone at that time
    std::complex<double> sum; ///< matched filter output against the mixing tone
    double energy;            ///< signal energy over noise density
};

struct PhaseEstimate
{
    double cycles = 0.0; ///< phase of the signal at the time asked for
    double frequency_Hz = 0.0;
    double concentration =
        0.0; ///< how well the phase of a mark is known (von Mises), 0: not at all
};

/// The phase at `time_s`, from marks in order of time, with a first guess of the frequency.
PhaseEstimate trackPhase(const std::vector<PhaseMark>& marks, double frequency_Hz, double time_s);

} // namespace demodulator
