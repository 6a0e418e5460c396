// SPDX-License-Identifier: MIT
// One loaded codec file or map file, as the mapping directory keeps it.
#pragma once

#include <QMap>
#include <QString>

/// What the file says. The order of the fields is binary interface.
struct CharacterMap
{
    QMap<signed char, QChar> table; ///< a byte's character; a byte that is not in it has none
    bool loaded = false;            ///< the file was read; otherwise the rest says nothing
    bool rightToLeft = false;       ///< the text is written from right to left
};

/// Reads the file as what its ending says, in exactly that letter case. An empty record when that
/// is no table of characters, or cannot be read.
CharacterMap readCharacterMap(const QString& path);
