// SPDX-License-Identifier: MIT
// What tests of the readers of tables share: content that is large or no text at all, and a look at
// the table that was read.
#pragma once

#include "support/amounts.h"
#include "tables/charactertable.h"

#include <QByteArray>
#include <QMap>
#include <QString>

namespace testsupport {

/// Bytes of a file far larger than any table; a reader whose cost grows linearly is done at once.
constexpr int HUGE_BYTES = largeAmount(10 * 1000 * 1000);
constexpr int MANY_LINES = largeAmount(1000 * 1000);

/// A million bytes of every value.
inline QByteArray binaryContent()
{
    QByteArray binary;
    for (int i = 0; i < 1000 * 1000; ++i)
        binary += static_cast<char>(i * 7 + i / 256);
    return binary;
}

/// Characters by unsigned bytes.
using Bytes = QMap<int, QString>;

inline Bytes bytesOf(const CharacterTable& table)
{
    Bytes bytes;
    for (auto entry = table.characters.cbegin(); entry != table.characters.cend(); ++entry)
        bytes.insert(static_cast<uchar>(entry.key()), *entry);
    return bytes;
}

} // namespace testsupport
