// SPDX-License-Identifier: MIT
// Follows one start-stop line that was found: its levels, tones, clock and pauses, and gives what
// was sent.
#pragma once

#include "signal/teleprinter/channel.h"

namespace teleprinter {

/// From sample `begin` on, of a history and a spectrum that outlive it.
std::unique_ptr<Channel> makeStartStopChannel(const Input& input, const Line& line,
                                              std::int64_t begin);

} // namespace teleprinter
