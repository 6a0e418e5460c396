// SPDX-License-Identifier: MIT
#include "station/io/systemtext.h"

#include <QFileInfo>

#include <cerrno>
#include <cstring>

namespace morsehost {

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

QString whyUnreadable(const QString& path)
{
    const QFileInfo file(path);
    if (!file.exists())
        return systemError(ENOENT);
    if (file.isDir())
        return QStringLiteral("is a directory");
    return file.isReadable() ? QString() : systemError(EACCES);
}

QString counted(long long count, const char* one, const char* several)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : several));
}

} // namespace morsehost
