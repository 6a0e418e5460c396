// SPDX-License-Identifier: MIT
#include "charmap/charactermap.h"

#include "tables/regularfile.h"
#include "tables/tableformat.h"

CharacterMap readCharacterMap(const QString& path)
{
    const TableFormat* const format = formatReadFrom(path);
    QFile file(path);
    if (!format || !format->readCharacters || !openRegularFile(file))
        return {};
    Faults ignored(0);
    const CharacterTable table = format->readCharacters(file.readAll(), ignored);
    return {table.characters, true, table.rightToLeft};
}
