// SPDX-License-Identifier: MIT
#include "app/datadirectory.h"

#include <QCoreApplication>
#include <QDir>

namespace morsehost {

QString dataDirectory(const QString& name)
{
    const QDir programs(QCoreApplication::applicationDirPath());
    return QDir::cleanPath(programs.filePath(QStringLiteral("../share/morsehandler/") + name));
}

} // namespace morsehost
