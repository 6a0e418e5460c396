// SPDX-License-Identifier: MIT
// What `morsehost` can do, as rows: for the program, and for its manual page and completion, which
// are written from them.
#pragma once

#include "app/commands/commands.h"

namespace morsehost {

/// In the order in which they are shown.
const std::vector<Command>& commands();

/// The options that stand in place of a command.
const std::vector<OptionRow>& programOptions();

/// What a command does, up to the first full stop or colon.
QString shortSummary(const Command& command);

} // namespace morsehost
