// SPDX-License-Identifier: MIT
#include "app/translate/mapfiles.h"

#include "tables/displayname.h"
#include "tables/hostpath.h"
#include "tables/tableformat.h"

#include <algorithm>

namespace translate {

QVector<MapFile> mapFilesIn(const QDir& folder)
{
    QVector<MapFile> files;
    const QStringList names = filesIn(folder);
    for (const QString& name : names) {
        const TableFormat* const format = formatOfFile(name);
        if (!format || format->charset == eCHARSET_NONE)
            continue;
        const QString base = baseNameOf(name);
        files.append({fullName(base, format->charset), base, name, format->charset});
    }
    std::stable_sort(files.begin(), files.end(),
                     [](const MapFile& a, const MapFile& b) { return a.name < b.name; });
    return files;
}

} // namespace translate
