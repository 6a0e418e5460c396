// SPDX-License-Identifier: MIT
// The manual page morsehost(1).
#pragma once

#include "app/commands/commands.h"

#include <QString>

#include <vector>

namespace morsehost {

/// Roff source with man macros, ASCII only.
QString manualPage(const std::vector<Command>& commands,
                   const std::vector<OptionRow>& programOptions, const QString& version,
                   const QString& date);

/// `text` such that roff shows it character by character: no control line, no command, and signs
/// that can be copied into a shell.
QString roffText(const QString& text);

} // namespace morsehost
