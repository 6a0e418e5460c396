// SPDX-License-Identifier: MIT
#include "station/io/folder.h"

#include "station/io/systemtext.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cerrno>

namespace morsehost {

namespace {

const QLatin1String DAY("{day}");

} // namespace

QString makeWritable(const QString& folder)
{
    if (QFileInfo::exists(folder) && !QFileInfo(folder).isDir())
        return QStringLiteral("is not a folder");
    errno = 0;
    if (!QDir().mkpath(folder))
        return QStringLiteral("the folder cannot be created: ") + systemError(errno);
    QTemporaryFile file(folder + QStringLiteral("/.morsehost-XXXXXX"));
    if (!file.open() || file.write("x") != 1 || !file.flush())
        return QStringLiteral("no file can be written there: ") + file.errorString();
    return {};
}

QString makeWritableForDays(const QString& folder)
{
    const int day = folder.indexOf(DAY);
    if (day < 0)
        return makeWritable(folder);
    const QString above = folder.left(day).section(QLatin1Char('/'), 0, -2);
    return makeWritable(above.isEmpty() ? QStringLiteral("/") : above);
}

QString folderOfDay(QString folder, qint64 time_us)
{
    if (!folder.contains(DAY))
        return folder;
    return folder.replace(DAY, QDateTime::fromMSecsSinceEpoch(time_us / 1000, Qt::UTC)
                                   .toString(QStringLiteral("yyyy-MM-dd")));
}

} // namespace morsehost
