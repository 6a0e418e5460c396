// SPDX-License-Identifier: MIT
// One signal that is followed.
#pragma once

#include "signal/samples/samples.h"
#include "signal/teleprinter/line.h"
#include "signal/teleprinter/parameters.h"
#include "signal/teleprinter/spectrum.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace teleprinter {

/// What every channel reads from. Owned by who owns the channel, and outlives it.
struct Input
{
    const demodulator::SampleHistory& history;
    const Spectrum& spectrum;
    const Parameters& parameters;
    double rate_Hz;
};

/// One word of a line.
struct Word
{
    unsigned elements = 0; ///< first data element is bit 0; a combination of ITA2 for CCIR 476
    double begin = 0.0;    ///< samples of the input
    double end = 0.0;
    bool isDoubtful = false; ///< may be another one, or one before it may have been missed
    double repeat = -1.0;    ///< where it begins again, in time diversity
};

class Channel
{
public:
    virtual ~Channel();

    /// Samples up to `end` are there; `isLast`: there will be no more. Returns the words that are
    /// decided now.
    virtual std::vector<Word> advance(std::int64_t end, bool isLast) = 0;

    /// The signal has ended, or was none.
    virtual bool isOver() const = 0;
    /// As it is known by now.
    virtual const Line& line() const = 0;
};

} // namespace teleprinter
