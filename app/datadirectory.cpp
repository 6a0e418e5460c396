// SPDX-License-Identifier: MIT
#include "app/datadirectory.h"

#include <QCoreApplication>
#include <QDir>

namespace morsehost {

QString dataDirectory(const QString& name)
{
    const QDir programs(QCoreApplication::applicationDirPath());
    const QString installed = programs.filePath(QStringLiteral("../share/morsehandler/") + name);
    if (QDir(installed).exists())
        return QDir::cleanPath(installed);
    return QStringLiteral(MORSEHOST_SOURCE_DATA "/") + name;
}

} // namespace morsehost
