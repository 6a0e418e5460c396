// SPDX-License-Identifier: MIT
// Recordings off the air that others published: what is known of each stands in a list, and the one
// who measures has fetched them into a folder.
#pragma once

#include "scoring.h"

#include <string>
#include <vector>

namespace reception {

/// Prints a table of character error rates of `morsehost decode` (the program beside this one) and
/// of the peers, and where to get what is missing in the folder. The exit status: 0, or 1 after a
/// message where the list or a recording is bad, or no recording is there.
int scoreOffAir(const std::string& list, const std::string& folder,
                const std::vector<bench::Peer>& peers);

} // namespace reception
