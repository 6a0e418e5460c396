// SPDX-License-Identifier: MIT
#include "tables/hostpath.h"

#include <QFileInfo>

QString localPath(const QString& path)
{
    if (QDir::separator() == QLatin1Char('\\') || !path.contains(QLatin1Char('\\')))
        return path;
    const QFileInfo asWritten(path);
    if (asWritten.exists())
        return path;
    const QString separated = QString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
    return QFileInfo::exists(separated) || !asWritten.dir().exists() ? separated : path;
}

QString findIgnoringCase(const QDir& directory, const QString& name)
{
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')))
        return {};
    const QDir folder(localPath(directory.path()));
    if (QFileInfo::exists(folder.filePath(name)))
        return name;
    const QStringList entries =
        folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    const auto base = [](const QString& entry) { return entry.section(QLatin1Char('.'), 0, 0); };
    QString first;
    for (const QString& entry : entries) {
        if (entry.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        if (base(entry) == base(name))
            return entry;
        if (first.isEmpty())
            first = entry;
    }
    return first;
}

QString findFile(const QString& path)
{
    QString written = localPath(path);
    if (QFileInfo::exists(written))
        return written;
    const int nameStart =
        qMax(path.lastIndexOf(QLatin1Char('/')), path.lastIndexOf(QLatin1Char('\\'))) + 1;
    const QDir folder(localPath(path.left(nameStart)));
    const QString name = findIgnoringCase(folder, path.mid(nameStart));
    return name.isEmpty() ? QString() : folder.filePath(name);
}
