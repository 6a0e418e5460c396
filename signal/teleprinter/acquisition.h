// SPDX-License-Identifier: MIT
// Stage: whether there is a teleprinter in a span of the input, and which. Every kind of line is
// tried on every pair of tones; the one that says most about what was heard wins, if its characters
// hold together as those of no other sound do.
#pragma once

#include "signal/teleprinter/channel.h"
#include "signal/teleprinter/framing.h"
#include "signal/teleprinter/line.h"
#include "signal/teleprinter/spectrum.h"

#include <optional>
#include <vector>

namespace teleprinter {

/// How well a span of the input fits a line.
struct Fit
{
    double score = 0.0;   ///< logarithm of the likelihood against noise alone
    double framing = 0.0; ///< part of it that the form of the characters brings
    int characters = 0;
    double formed = 0.0;   ///< share of them that have their form
    double occupied = 0.0; ///< share of the span that characters take
    /// Share of it, from the first character on, that is neither character nor mark.
    double unexplained = 0.0;
    double commonest = 0.0; ///< share of the commonest character among them
    /// Mean amplitude of the tone that is off over that of the one that is on; once refined.
    double contrast = 1.0;
    double parity = 1.0;        ///< ASCII that must have one: share of characters that have it
    double regular = 0.0;       ///< share of neighbouring elements that differ
    double evenPauses = 1.0;    ///< share of pauses that are as long as most are
    bool isSteadyFirst = false; ///< ASCII: the first element hardly ever differs
};

struct Acquired
{
    Line line;
    Fit fit;
    double begin = 0.0; ///< of a synchronous line: a sample at which a word begins
};

/// `begin` and `end`: samples of the history. Nothing where nothing is sure, or nothing
/// that fits clearly better than the line that is `followed` already.
std::optional<Acquired> acquire(const Input& input, const Known& known, std::int64_t begin,
                                std::int64_t end, const Line* followed = nullptr);

} // namespace teleprinter
