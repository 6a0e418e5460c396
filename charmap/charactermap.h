// SPDX-License-Identifier: MIT
// One loaded codec file or map file, as the mapping directory keeps it.
#pragma once

#include <QMap>
#include <QString>

struct CharacterMap
{
    QMap<signed char, QChar> table;
    bool loaded = false;
    bool rightToLeft = false;
};

/// Reads the file as what its ending says: ".map" or ".codec", in lower case. An empty record when
/// it is neither, or cannot be read.
CharacterMap readCharacterMap(const QString& path);
