// SPDX-License-Identifier: MIT
#include "station/io/systemtext.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace morsehost {

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

QString whyUnreadable(const QString& path)
{
    if (::access(QFile::encodeName(path).constData(), R_OK) != 0)
        return systemError(errno);
    return QFileInfo(path).isDir() ? QStringLiteral("is a folder") : QString();
}

QString whyNoRegularFile(const QString& path)
{
    QString why = whyUnreadable(path);
    if (!why.isEmpty() || QFileInfo(path).isFile())
        return why;
    return QStringLiteral("is not a regular file");
}

QString whyNoFolder(const QString& path)
{
    const QFileInfo there(path);
    if (there.exists() && !there.isDir())
        return QStringLiteral("is not a folder");
    const bool isReadable = ::access(QFile::encodeName(path).constData(), R_OK | X_OK) == 0;
    return isReadable ? QString() : systemError(errno);
}

QString counted(long long count, const char* one, const char* several)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : several));
}

} // namespace morsehost
