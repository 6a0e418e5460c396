// SPDX-License-Identifier: MIT
#include "app/translate/mapfiles.h"

#include <algorithm>

namespace translate {

namespace {

struct Ending
{
    const char* text;
    const char* charset;
};

constexpr Ending endings[] = {
    {".codec", "ITA2"},
    {".ita2.map", "ITA2"},
    {".ascii.map", "ASCII"},
};

} // namespace

QVector<MapFile> mapFilesIn(const QDir& folder)
{
    QVector<MapFile> files;
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        for (const Ending& ending : endings) {
            if (!name.endsWith(QLatin1String(ending.text), Qt::CaseInsensitive))
                continue;
            const QString base = name.section(QLatin1Char('.'), 0, 0);
            files.append({base + QLatin1String(" - ") + QLatin1String(ending.charset), base,
                          folder.filePath(name)});
        }
    }
    std::stable_sort(files.begin(), files.end(),
                     [](const MapFile& a, const MapFile& b) { return a.name < b.name; });
    return files;
}

} // namespace translate
