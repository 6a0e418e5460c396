// SPDX-License-Identifier: MIT
#include "charmap/charactermap.h"

#include "tables/codecfile.h"
#include "tables/mapfile.h"
#include "tables/regularfile.h"
#include "tables/tableformat.h"

CharacterMap readCharacterMap(const QString& path)
{
    const bool isMapFile = isReadAs(path, TableKind::Map);
    const bool isCodecFile = isReadAs(path, TableKind::Codec);
    QFile file(path);
    if (!(isMapFile || isCodecFile) || !openRegularFile(file))
        return {};
    const QByteArray content = file.readAll();
    const CharacterTable table = isMapFile ? readMapFile(content) : readCodecFile(content);
    return {table.characters, true, table.rightToLeft};
}
