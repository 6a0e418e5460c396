// SPDX-License-Identifier: MIT
// Reads Morse alphabet files (".mal"): UTF-8 lines of "text, tab, code" below "@ name value"
// header lines. For this project alone: not installed, and not exported by the library.
#pragma once

#include "tables/fault.h"

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QString>

/// What a Morse alphabet is made of.
struct MorseAlphabet
{
    /// The character or word to be written, and its code in dots and dashes.
    QMap<QString, QString> codes;
    bool rightToLeft = false;
    /// The line of the file that each of `codes` comes from; empty when faults are not wanted.
    QHash<QString, int> lines;
};

/// - Lines end at LF or CR LF. A byte order mark is skipped; one of UTF-16 or UTF-32 is obeyed.
/// - Header lines come first; the last of them alone decides about the direction.
/// - Every further line is an entry: the key up to the first tab, the code up to the second. There
///   are no comments. Lines without a key are skipped; a later line replaces an earlier one of the
///   same key.
/// - The last line of the file is never stored, which is why such files end with a spare line.
MorseAlphabet readAlphabetFile(const QByteArray& bytes, Faults& faults);
MorseAlphabet readAlphabetFile(const QByteArray& bytes);

/// The table that is in force where no file was read: 53 entries of upper-case letters, digits,
/// punctuation, and the words WARNING and ERROR.
QMap<QString, QString> defaultAlphabet();
