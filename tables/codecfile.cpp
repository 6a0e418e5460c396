// SPDX-License-Identifier: MIT
#include "tables/codecfile.h"

#include "tables/tabletext.h"

namespace {

/// As QRegExp matches a whole line with "(.);(.*)".
bool isEntry(QStringView line)
{
    return line.size() >= 2 && line[1] == QLatin1Char(';');
}

std::optional<QChar> displayCharacter(QStringView value)
{
    if (value.isEmpty())
        return QChar(QLatin1Char(' '));
    const std::optional<int> number = numberIn(value, 16);
    if (!number || !value.startsWith(QLatin1String("0x")))
        return std::nullopt;
    return QChar(static_cast<ushort>(*number));
}

} // namespace

CharacterTable readCodecFile(const QByteArray& bytes)
{
    CharacterTable table;
    TableText text(bytes);
    text.ReadLine();
    table.rightToLeft = text.ReadLine().startsWith(QLatin1String("RL"));
    while (!text.AtEnd()) {
        const QStringView line = text.ReadLine();
        if (!isEntry(line))
            continue;
        const std::optional<QChar> character = displayCharacter(line.mid(2));
        if (character && !character->isNull())
            table.characters.insert(byteOf(line[0]), *character);
    }
    return table;
}
