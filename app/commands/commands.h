// SPDX-License-Identifier: MIT
// What `morsehost` can do: one row a command, one file a command.
#pragma once

#include "app/options/arguments.h"

namespace morsehost {

struct Command
{
    CommandSyntax syntax;
    /// Returns the exit status. May still find the arguments unusable and say so in them.
    int (*run)(Arguments& arguments);
};

Command decodeCommand();
Command bandCommand();
Command inspectCommand();
Command symbolsCommand();
Command alphabetsCommand();
Command mapsCommand();
Command decodersCommand();
Command translateCommand();
Command mapCommand();
Command lintCommand();
Command searchCommand();
Command stationCommand();
Command passwordCommand();

} // namespace morsehost
