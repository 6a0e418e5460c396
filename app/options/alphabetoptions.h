// SPDX-License-Identifier: MIT
// Options that the commands for Morse share: the alphabet.
#pragma once

#include "app/options/arguments.h"
#include "station/morsestation.h"

namespace morsehost {

/// --alphabet, --alphabets
std::vector<OptionRow> alphabetOptionRows();
/// Errors are left in `arguments`.
void readAlphabetOptions(Arguments& arguments, StationSettings& settings);
/// False, and said on standard error, when there is no such alphabet.
bool startWithAlphabet(MorseStation& station, const StationSettings& settings);

} // namespace morsehost
