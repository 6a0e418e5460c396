// SPDX-License-Identifier: MIT
// A codec file: the input is the file.
#include "fuzz/tablechecks.h"
#include "tables/codecfile.h"

using fuzzing::require;

namespace {

void requireSameRewritten(const CharacterTable& table)
{
    QString file = table.rightToLeft ? "codec\nRL\n" : "codec\n\n";
    for (auto entry = table.characters.cbegin(); entry != table.characters.cend(); ++entry)
        file += QString("%1;0x%2\n")
                    .arg(QChar(static_cast<uchar>(entry.key())))
                    .arg(entry->unicode(), 0, 16);
    const CharacterTable again = readCodecFile(file.toUtf8());
    require(again.characters == table.characters && again.rightToLeft == table.rightToLeft,
            "a table that is written reads back the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzzing::bytesOf(data, size);

    const CharacterTable table = readCodecFile(bytes);
    require(table.characters.size() <= bytes.count('\n') + 1, "no more entries than lines");
    for (const QChar c : table.characters)
        require(!c.isNull(), "the code 0 is not stored");
    if (!fuzzing::isChecked(data, size))
        return 0;

    static const fuzzing::Folder folder;
    requireSameRewritten(table);
    fuzzing::requireTranslations(table.characters);

    folder.write("ITA2.codec", bytes);
    fuzzing::requireSameHandler(folder, "ITA2 - ITA2", table);
    fuzzing::requireSameReport("ITA2.codec", bytes, table);
    return 0;
}
