// SPDX-License-Identifier: MIT
// Reads codec files (".codec"): two lines of header, then lines of "character;0xNNNN".
// For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/charactertable.h"
#include "tables/fault.h"

#include <QByteArray>

/// - Line 1 is ignored; a line 2 that begins with "RL" declares that the text runs right to left.
/// - Every further line, the last one included, is an entry when its second character is ";":
///   the decoder character, then the display character as a hexadecimal number with "0x", of which
///   the low 16 bits count. No value at all is a blank. Other lines are skipped.
/// - The value 0 is not stored. A later line replaces an earlier one of the same character.
CharacterTable readCodecFile(const QByteArray& bytes, Faults& faults);
CharacterTable readCodecFile(const QByteArray& bytes);
