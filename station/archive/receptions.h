// SPDX-License-Identifier: MIT
// One transmission that was heard several times: by two stations, or by two receivers of one.
#pragma once

#include "station/archive/archive.h"

#include <optional>
#include <vector>

namespace morsehost {

struct ArchivedReception
{
    ArchivedTransmission transmission;
    std::optional<qint64> copyOf; ///< id of the best one, where this one is another reception of it
};

/// Two are receptions of one transmission when all of this holds:
/// - another station or another receiver has heard it, with the same decoder;
/// - half of the shorter one lies within the time of the other;
/// - their frequencies are within 1 kHz, where both are known: a receiver of one signal knows what
///   it was tuned to, not the tone in its passband;
/// - of the shorter text, three fifths of all runs of three characters are in the other one.
/// The best has the highest signal-to-noise ratio, then the longest text.
bool isSameTransmission(const ArchiveRecord& one, const ArchiveRecord& other);

/// Those that belong together stand together, the best first, at the place of the first of them. A
/// receiver has heard each but once.
std::vector<ArchivedReception> joinReceptions(const std::vector<ArchivedTransmission>& found);

} // namespace morsehost
