// SPDX-License-Identifier: MIT
#include "app/datadirectory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace morsehost {

QString dataDirectory(const QString& name)
{
    const QDir programs(QCoreApplication::applicationDirPath());
    const QString installed = programs.filePath(QStringLiteral("../share/morsehandler/") + name);
    if (QFileInfo::exists(installed))
        return QDir::cleanPath(installed);
    return QStringLiteral(MORSEHOST_SOURCE_DATA "/") + name;
}

} // namespace morsehost
