// SPDX-License-Identifier: MIT
// A map file: the input is the file.
#include "fuzz/tablechecks.h"
#include "tables/mapfile.h"

using fuzzing::require;

namespace {

void requireSameRewritten(const CharacterTable& table)
{
    QByteArray file = table.rightToLeft ? "@ TextDirection RL\n" : "";
    for (auto entry = table.characters.cbegin(); entry != table.characters.cend(); ++entry)
        file += "0x" + QByteArray::number(static_cast<uchar>(entry.key()), 16) + "\t0x" +
                QByteArray::number(entry->unicode(), 16) + '\n';
    const CharacterTable again = readMapFile(file + '\n');
    require(again.characters == table.characters && again.rightToLeft == table.rightToLeft,
            "a table that is written reads back the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = fuzzing::bytesOf(data, size);

    const CharacterTable table = readMapFile(bytes);
    require(table.characters.size() <= bytes.count('\n'),
            "no more entries than lines but the last");
    if (!fuzzing::isChecked(data, size))
        return 0;

    static const fuzzing::Folder folder;
    requireSameRewritten(table);
    fuzzing::requireTranslations(table.characters);

    folder.write("Input.ascii.map", bytes);
    fuzzing::requireSameHandler(folder, "Input - ASCII", table);
    fuzzing::requireSameReport("Input.ascii.map", bytes, table);
    return 0;
}
