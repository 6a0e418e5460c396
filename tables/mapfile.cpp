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

signed char byteOfNumber(int line, QStringView key, int number, Faults& faults)
{
    const auto byte = static_cast<uchar>(number);
    if (number < 0 || number > 0xFF) {
        faults.Error(line, "the key %1 is not a byte: its low 8 bits are %2", key, byte);
    } else if (key.size() == 1) {
        faults.Warning(line, "the key %1 is the number %2, not the figure, which is byte %3", key,
                       number, static_cast<uchar>(key[0].unicode()));
    } else if (key.startsWith(QLatin1Char('0')) &&
               !key.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        faults.Warning(line, "the key %1 begins with 0 and is therefore octal: byte %2", key, byte);
    }
    return static_cast<signed char>(byte);
}

signed char decoderCharacter(int line, QStringView key, Faults& faults)
{
    if (const std::optional<int> number = numberIn(key, ANY_BASE))
        return byteOfNumber(line, key, *number, faults);
    if (key.isEmpty()) {
        faults.Error(line, "no key before the tab: the entry goes to byte 0x00");
        return 0;
    }
    if (key[0].unicode() > 0xFF) {
        faults.Error(line, "the key %1 is not an 8-bit character: the entry goes to byte 0x00",
                     key);
    } else if (key.size() > 1) {
        faults.Error(line, "%1 is not a number: only its first character counts, byte %2", key,
                     static_cast<uchar>(key[0].unicode()));
    }
    return byteOf(key[0]);
}

QChar mapCharacter(int line, QStringView value, Faults& faults)
{
    if (value.isEmpty())
        return QLatin1Char(' ');
    const std::optional<int> number = numberIn(value, ANY_BASE);
    if (number && value.startsWith(QLatin1String("0x"))) {
        const QChar character = characterOfNumber(line, *number, faults);
        if (character.isNull())
            faults.Warning(line, "the value is 0: the byte is shown as a blank");
        return character;
    }
    if (value.size() > 1 && !value.trimmed().isEmpty()) {
        faults.Error(line,
                     number
                         ? "%1 has no leading \"0x\" and is not a character code: only its first "
                           "character counts, %2"
                         : "%1 is not a number: only its first character counts, %2",
                     value, value[0]);
    }
    return value[0];
}

void readMapEntry(const TableText& text, CharacterTable& table, Faults& faults)
{
    const int number = text.Number();
    QStringView line = text.Line();
    if (line.startsWith(QLatin1Char('#')))
        return;
    if (line.isEmpty()) {
        faults.Error(number,
                     "an empty line that is not the last is an entry: it shows byte 0x00 as a "
                     "blank");
        table.Store(number, 0, QLatin1Char(' '), faults);
        return;
    }
    if (matchHeaderLine(line))
        faults.Error(number, LATE_HEADER);
    if (!line.contains(QLatin1Char('\t')))
        faults.Error(number, "no tab: the line shows its byte as a blank");
    const signed char key = decoderCharacter(number, takeField(line), faults);
    table.Store(number, key, mapCharacter(number, takeField(line), faults), faults);
}

} // namespace

CharacterTable readMapFile(const QByteArray& bytes, Faults& faults)
{
    CharacterTable table;
    TableText text(bytes, TableEncoding::Utf8OrLatin1, faults);
    table.rightToLeft = readHeader(text, faults);
    for (; !text.AtEnd(); text.Next())
        readMapEntry(text, table, faults);
    if (!text.Line().isEmpty() && !text.Line().startsWith(QLatin1Char('#')))
        faults.Error(text.Number(), LAST_LINE_LOST);
    if (table.characters.isEmpty())
        faults.Error(0, NO_ENTRY);
    return table;
}

CharacterTable readMapFile(const QByteArray& bytes)
{
    Faults ignored(0);
    return readMapFile(bytes, ignored);
}
