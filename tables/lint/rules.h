// SPDX-License-Identifier: MIT
// What no reader needs to know of a table: one pass for each kind.
#pragma once

#include "tables/alphabetfile.h"
#include "tables/charactertable.h"
#include "tables/fault.h"

namespace lint {

void checkAlphabet(const MorseAlphabet& alphabet, Faults& faults);
void checkCharacters(const CharacterTable& table, Faults& faults);

} // namespace lint
