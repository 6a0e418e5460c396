// SPDX-License-Identifier: MIT
#include "tables/hostpath.h"

#include <QFileInfo>

#include <algorithm>

namespace {

/// Names are none.
bool isPath(const QString& name)
{
    return name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\'));
}

} // namespace

QString baseNameOf(const QString& fileName)
{
    return fileName.section(QLatin1Char('.'), 0, 0);
}

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

QDir localFolder(const QDir& directory)
{
    QDir folder(directory);
    folder.setPath(localPath(directory.path()));
    return folder;
}

QStringList filesIn(const QDir& directory)
{
    return localFolder(directory).entryList(QDir::Files, QDir::Name);
}

void sortIgnoringCase(QStringList& names)
{
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        const int order = a.compare(b, Qt::CaseInsensitive);
        return order != 0 ? order < 0 : a < b;
    });
}

FolderNames::FolderNames(const QDir& directory)
    : m_names(
          localFolder(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot))
{
    sortIgnoringCase(m_names);
}

QString FolderNames::Find(const QString& name) const
{
    if (isPath(name))
        return {};
    const auto [first, last] = std::equal_range(
        m_names.begin(), m_names.end(), name,
        [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    if (first == last || std::find(first, last, name) != last)
        return first == last ? QString() : name;
    const QString base = baseNameOf(name);
    const auto sameBase =
        std::find_if(first, last, [&](const QString& entry) { return baseNameOf(entry) == base; });
    return sameBase == last ? *first : *sameBase;
}

QString findIgnoringCase(const QDir& directory, const QString& name)
{
    if (name.isEmpty() || isPath(name))
        return {};
    if (QFileInfo::exists(localFolder(directory).filePath(name)))
        return name;
    return FolderNames(directory).Find(name);
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
