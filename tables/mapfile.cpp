// SPDX-License-Identifier: MIT
#include "tables/mapfile.h"

#include "tables/headerline.h"
#include "tables/tabletext.h"

namespace {

constexpr int ANY_BASE = 0;

/// Cuts off and returns what comes before the first tab.
QStringView takeField(QStringView& line)
{
    const qsizetype tab = line.indexOf(QLatin1Char('\t'));
    const QStringView field = tab < 0 ? line : line.left(tab);
    line = tab < 0 ? QStringView() : line.mid(tab + 1);
    return field;
}

signed char decoderCharacter(QStringView key)
{
    if (const std::optional<int> number = numberIn(key, ANY_BASE))
        return static_cast<signed char>(*number);
    return key.isEmpty() ? 0 : byteOf(key[0]);
}

QChar displayCharacter(QStringView value)
{
    if (value.startsWith(QLatin1String("0x"))) {
        if (const std::optional<int> number = numberIn(value, ANY_BASE))
            return QChar(static_cast<ushort>(*number));
    }
    return value.isEmpty() ? QChar(QLatin1Char(' ')) : value[0];
}

} // namespace

CharacterTable readMapFile(const QByteArray& bytes)
{
    CharacterTable table;
    TableText text(bytes);
    QStringView line = text.ReadLine();
    while (const auto header = matchHeaderLine(line)) {
        table.rightToLeft = header->declaresRightToLeft();
        line = text.ReadLine();
    }
    // The line in hand is dropped once the file is exhausted: the spare line at its end.
    for (; !text.AtEnd(); line = text.ReadLine()) {
        if (line.startsWith(QLatin1Char('#')))
            continue;
        const signed char key = decoderCharacter(takeField(line));
        table.characters.insert(key, displayCharacter(takeField(line)));
    }
    return table;
}
