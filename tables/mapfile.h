// SPDX-License-Identifier: MIT
// Reads map files (".ita2.map", ".ascii.map"): "@ name value" header lines, then lines of
// "key, tab, value". For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/charactertable.h"
#include "tables/fault.h"

#include <QByteArray>

/// - Header lines come first; the last of them alone decides about the direction.
/// - Lines that begin with "#" are comments. Every other line, an empty one too, is an entry: its
///   key up to the first tab, its value up to the second.
/// - The key is a number (0x41, 0101, 65), of which the low 8 bits count, or else its first
///   character. The value is a number with "0x", of which the low 16 bits count, or else its first
///   character, or a blank when there is none.
/// - A later line replaces an earlier one of the same key. The last line of the file is never
///   stored, which is why such files end with a spare line.
CharacterTable readMapFile(const QByteArray& bytes, Faults& faults);
CharacterTable readMapFile(const QByteArray& bytes);
