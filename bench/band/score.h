// SPDX-License-Identifier: MIT
// How well a band was read: what was received, by frequency, beside what was sent there.
#pragma once

#include "band/bands.h"

#include <string>
#include <vector>

namespace bands {

/// A text that was received somewhere.
struct Received
{
    double tone_Hz;
    double begin_s;
    std::string text;
};

struct Score
{
    /// Character error rate of each frequency of the band, 1 at most.
    std::vector<double> errors;
    /// Characters given where nobody sends, more than NEAR_Hz from every frequency.
    std::size_t strays = 0;
    double duration_s = 0.0;

    double meanError() const;
    double straysPerMinute() const;
};

/// So near, a text belongs to a frequency: stations answer up to 40 Hz beside.
constexpr double NEAR_Hz = 60.0;

Score score(const Band& band, const std::vector<Received>& received);

/// For every frequency the text of that one bin of a fixed-bin decoder which fits best: what such
/// decoders can be given at most. Texts of one tone_Hz are taken together.
Score scoreBestBin(const Band& band, const std::vector<Received>& received);

} // namespace bands
