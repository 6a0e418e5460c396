// SPDX-License-Identifier: MIT
#include "tables/codecfile.h"

#include "tables/tabletext.h"

namespace {

/// One character, a semicolon, anything.
bool isEntry(QStringView line)
{
    return line.size() >= 2 && line[1] == QLatin1Char(';');
}

/// Nothing for a line that is skipped.
std::optional<QChar> codecCharacter(int line, QStringView value, Faults& faults)
{
    if (value.isEmpty())
        return QChar(QLatin1Char(' '));
    const std::optional<int> number = numberIn(value, 16);
    if (!number) {
        faults.Error(line, "the line is skipped: %1 is not a number", value);
        return std::nullopt;
    }
    if (!value.startsWith(QLatin1String("0x"))) {
        faults.Error(line,
                     "the line is skipped: a value is written with a leading \"0x\", in small "
                     "letters");
        return std::nullopt;
    }
    const QChar character = characterOfNumber(line, *number, faults);
    if (character.isNull()) {
        faults.Error(line, "the value is 0: the line is skipped and the character stays as it is");
        return std::nullopt;
    }
    return character;
}

bool readDirection(const TableText& text, Faults& faults)
{
    const QStringView line = text.Line();
    if (line.startsWith(QLatin1String("RL")))
        return true;
    if (isEntry(line)) {
        faults.Error(text.Number(),
                     "the second line says the text direction and is never read as an entry");
    } else if (line.contains(QLatin1String("RL"), Qt::CaseInsensitive) ||
               line.contains(QLatin1String("RTL"), Qt::CaseInsensitive)) {
        faults.Warning(text.Number(),
                       "this is not right-to-left: the second line has to begin with \"RL\", in "
                       "capitals");
    }
    return false;
}

void readCodecEntry(const TableText& text, CharacterTable& table, Faults& faults)
{
    const QStringView line = text.Line();
    if (!isEntry(line)) {
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
            faults.Error(text.Number(),
                         "the line is skipped: an entry is one character, \";\" and a value");
        }
        return;
    }
    const std::optional<QChar> character = codecCharacter(text.Number(), line.mid(2), faults);
    if (!character)
        return;
    if (line[0].unicode() > 0xFF) {
        faults.Error(text.Number(),
                     "the key %1 is not an 8-bit character: the entry goes to byte 0x00", line[0]);
    }
    table.Store(text.Number(), byteOf(line[0]), *character, faults);
}

} // namespace

CharacterTable readCodecFile(const QByteArray& bytes, Faults& faults)
{
    CharacterTable table;
    TableText text(bytes, TableEncoding::Utf8OrLatin1, faults);
    if (isEntry(text.Line()))
        faults.Error(text.Number(), "the first line is a title and never read as an entry");
    text.Next();
    table.rightToLeft = readDirection(text, faults);
    while (!text.AtEnd()) {
        text.Next();
        readCodecEntry(text, table, faults);
    }
    if (table.characters.isEmpty())
        faults.Error(0, NO_ENTRY);
    return table;
}

CharacterTable readCodecFile(const QByteArray& bytes)
{
    Faults ignored(0);
    return readCodecFile(bytes, ignored);
}
