// SPDX-License-Identifier: MIT
// Completion of the program's words in the shell.
#pragma once

#include "app/commands/commands.h"

#include <QString>

#include <vector>

namespace morsehost {

/// A script for bash. What can follow an option is told by the name of its value: DIR, FILE and
/// PICTURE are paths; NAME is what a command of the option's plural lists ("--map NAME": `morsehost
/// maps`).
QString bashCompletion(const std::vector<Command>& commands,
                       const std::vector<OptionRow>& programOptions);

} // namespace morsehost
