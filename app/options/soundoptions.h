// SPDX-License-Identifier: MIT
// Options that the commands for sound share: which sound, and what is known of the signal in it.
#pragma once

#include "app/options/arguments.h"
#include "station/audio/sound.h"

#include <string>
#include <vector>

namespace morsehost {

/// As a help shows it, in whole numbers: "40 to 300".
std::string range(double lowest, double highest);

/// --channel, --rate, --tone, --wpm
std::vector<OptionRow> soundOptionRows();
/// One for each operand; "-" is standard input. Errors are left in `arguments`.
std::vector<SoundRequest> readSoundOptions(Arguments& arguments);

} // namespace morsehost
