// SPDX-License-Identifier: MIT
#include "tables/tableformat.h"

#include "tables/codecfile.h"
#include "tables/mapfile.h"

#include <algorithm>

namespace {

constexpr QLatin1String MAP_ENDING = literal(".map");
constexpr QLatin1String ANY = literal("");

template <typename Condition>
const TableFormat* firstFormat(Condition condition)
{
    const auto* const found = std::find_if(TABLE_FORMATS.begin(), TABLE_FORMATS.end(), condition);
    return found == TABLE_FORMATS.end() ? nullptr : found;
}

} // namespace

const std::array<TableFormat, TABLE_FORMAT_COUNT> TABLE_FORMATS = {{
    {TableKind::Alphabet, eCHARSET_NONE, ALPHABET_ENDING, ALPHABET_ENDING},
    {TableKind::Characters, eCHARSET_ITA2, literal(".codec"), literal(".codec"), literal("ITA2"),
     readCodecFile},
    {TableKind::Characters, eCHARSET_ITA2, literal(".ita2.map"), MAP_ENDING, ANY, readMapFile},
    {TableKind::Characters, eCHARSET_ASCII, literal(".ascii.map"), MAP_ENDING, ANY, readMapFile},
    {TableKind::DecoderModules, eCHARSET_NONE, literal(".txt"), literal(".txt")},
}};

const TableFormat* formatOfFile(const QString& fileName)
{
    return firstFormat([&](const TableFormat& format) {
        return fileName.endsWith(format.suffix, Qt::CaseInsensitive);
    });
}

const TableFormat* formatReadFrom(const QString& fileName)
{
    return firstFormat([&](const TableFormat& format) { return fileName.endsWith(format.ending); });
}

const TableFormat* formatMeantBy(const QString& fileName)
{
    const TableFormat* const listed = formatOfFile(fileName);
    return listed ? listed : firstFormat([&](const TableFormat& format) {
        return fileName.endsWith(format.ending, Qt::CaseInsensitive);
    });
}
