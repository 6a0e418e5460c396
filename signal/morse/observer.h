// SPDX-License-Identifier: MIT
// For looking at a demodulator while it works, for instance to draw a picture of a doubtful
// passage. Nothing is computed for an observer, and it changes nothing.
#pragma once

#include "signal/morse/marklikelihood.h"

#include <complex>
#include <cstddef>
#include <cstdint>

namespace demodulator {

/// A moment of the tone that is followed.
struct FollowedStep
{
    std::int64_t time_us;       ///< its middle; steps follow each other every 4 ms or so
    double tone_Hz;             ///< where the tone was expected
    std::complex<double> value; ///< half the amplitude found there, and its phase
    Level level;                ///< what the signal and the noise were expected to be
    double noise = 0.0;         ///< of this very step: more than that of the level during a crash
};

/// Times count from the first sample, as those of a SymbolSink.
class Observer
{
public:
    virtual ~Observer();

    /// The sound as all stages get it, piece by piece from its beginning.
    virtual void sound(const float* samples, std::size_t count, double rate_Hz) = 0;

    /// A step of a signal. What came before a signal was noticed is heard again then, so that steps
    /// may begin in the past; they take the place of earlier ones from that time on.
    virtual void step(const FollowedStep& step) = 0;

    /// A mark was decided. What it was taken for follows at the sink: the transmission that it
    /// begins, if it does, and its codes. `unit_us` is a dot's length at the speed it was heard at.
    virtual void mark(std::int64_t begin_us, std::int64_t end_us, double unit_us) = 0;
};

} // namespace demodulator
