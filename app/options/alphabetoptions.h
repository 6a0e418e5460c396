// SPDX-License-Identifier: MIT
// Options that the commands for Morse share: the alphabet.
#pragma once

#include "app/options/arguments.h"

namespace morsehost {

/// By this name the alphabet that is built into the library is chosen.
constexpr char BUILT_IN_ALPHABET[] = "Default";
/// Taken where none is chosen.
constexpr char DEFAULT_ALPHABET[] = "International";

struct AlphabetChoice
{
    QString name; ///< empty for the built-in one
    QString directory;
};

/// --alphabet, --alphabets
std::vector<OptionRow> alphabetOptionRows();
/// Errors are left in `arguments`.
AlphabetChoice readAlphabetOptions(Arguments& arguments);
/// "Name: no such alphabet in DIRECTORY"
void complainOfAlphabet(const QString& name, const QString& directory);

} // namespace morsehost
