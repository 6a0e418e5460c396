// SPDX-License-Identifier: MIT
#include "tables/tableformat.h"

#include <algorithm>

const TableFormat* formatOfFile(const QString& fileName)
{
    const auto* const found =
        std::find_if(TABLE_FORMATS.begin(), TABLE_FORMATS.end(), [&](const TableFormat& format) {
            return fileName.endsWith(format.suffix, Qt::CaseInsensitive);
        });
    return found == TABLE_FORMATS.end() ? nullptr : found;
}

bool isReadAs(const QString& fileName, TableKind kind)
{
    return std::any_of(TABLE_FORMATS.begin(), TABLE_FORMATS.end(), [&](const TableFormat& format) {
        return format.kind == kind && fileName.endsWith(format.ending);
    });
}
