// SPDX-License-Identifier: MIT
// Options that the commands for Morse share: the alphabet.
#pragma once

#include "app/options/arguments.h"
#include "station/morsestation.h"

namespace morsehost {

/// By this name the alphabet that is built into the library is chosen.
constexpr char BUILT_IN_ALPHABET[] = "Default";
/// Taken where none is chosen.
constexpr char DEFAULT_ALPHABET[] = "International";

/// --alphabet, --alphabets, --cut-numbers
std::vector<OptionRow> alphabetOptionRows();
/// Errors are left in `arguments`.
AlphabetChoice readAlphabetOptions(Arguments& arguments);
/// "Name: no such alphabet in DIRECTORY"
void complainOfAlphabet(const AlphabetChoice& alphabet);

} // namespace morsehost
