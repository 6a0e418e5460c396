// SPDX-License-Identifier: MIT
// Completion of the program's words in the shell.
#pragma once

#include "app/commands/commands.h"

#include <QString>

#include <vector>

namespace morsehost {

// What can follow an option is known by the name of its value: DIR, FILE and PICTURE are paths;
// NAME is what a command of the option's plural lists ("--map NAME": `morsehost maps`).

/// A script for bash.
QString bashCompletion(const std::vector<Command>& commands,
                       const std::vector<OptionRow>& programOptions);
/// A function for zsh, to be found as "_morsehost".
QString zshCompletion(const std::vector<Command>& commands,
                      const std::vector<OptionRow>& programOptions);
/// A script for fish.
QString fishCompletion(const std::vector<Command>& commands,
                       const std::vector<OptionRow>& programOptions);

} // namespace morsehost
