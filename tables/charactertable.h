// SPDX-License-Identifier: MIT
// A table from 8-bit decoder characters to display characters, and its use in both directions.
// For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/fault.h"

#include <QMap>
#include <QString>

/// Keys are signed on every platform, so that the bytes 0x80 to 0xFF come before 0x00 to 0x7F and
/// the same table translates back alike everywhere.
using CharacterMapping = QMap<signed char, QChar>;

/// What a codec file or a map file holds.
struct CharacterTable
{
    CharacterMapping characters;
    bool rightToLeft = false;
    /// The line of the file that each of `characters` comes from.
    QMap<signed char, int> lines;

    /// Takes the entry of a line; it replaces an earlier one of its key.
    void Store(int line, signed char key, QChar character, Faults& faults);
};

/// The low 16 bits of a number that a file gives for a character.
QChar characterOfNumber(int line, int number, Faults& faults);

/// One character for each of `text`: what the table has for it, a blank where it has the code 0,
/// and itself where it has nothing or the character is above U+00FF.
QString translateForward(const CharacterMapping& characters, const QString& text);

/// One character for each of `text`: the first key in order that the table translates to it;
/// itself where there is none or that key is 0.
QString translateBack(const CharacterMapping& characters, const QString& text);
