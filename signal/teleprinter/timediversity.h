// SPDX-License-Identifier: MIT
// Follows one line that sends each character twice (Sitor-B): both times are weighed together.
#pragma once

#include "signal/teleprinter/channel.h"

namespace teleprinter {

/// A word begins at sample `begin` of the input, and so one every seven elements before and after;
/// what is from sample `from` on is heard.
std::unique_ptr<Channel> makeTimeDiversityChannel(const Input& input, const Line& line,
                                                  double begin, std::int64_t from);

} // namespace teleprinter
