// SPDX-License-Identifier: MIT
// Tables of characters: bytes that show the same character, of which the way back knows one.
#include "tables/lint/rules.h"

namespace lint {

void checkCharacters(const CharacterTable& table, Faults& faults)
{
    // Turning text back takes the first key in the order of the table.
    QMap<QChar, signed char> winners;
    for (auto entry = table.characters.cbegin(); entry != table.characters.cend(); ++entry) {
        const auto byte = static_cast<uchar>(entry.key());
        const int line = table.lines.value(entry.key());
        const QChar character = *entry;
        if (character.isNull())
            continue;
        const auto winner = winners.constFind(character);
        if (winner != winners.constEnd()) {
            faults.Warning(line,
                           "%1 shows the same character %2 as %3 in line %4, which it is always "
                           "turned back into",
                           byte, character, static_cast<uchar>(*winner),
                           table.lines.value(*winner));
            continue;
        }
        winners.insert(character, entry.key());
        if (character == QLatin1Char(' ') && byte != ' ') {
            faults.Warning(line,
                           "%1 is shown as a blank, so every blank that is turned back becomes %1",
                           byte);
        }
    }
}

} // namespace lint
