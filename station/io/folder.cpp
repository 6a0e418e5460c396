// SPDX-License-Identifier: MIT
#include "station/io/folder.h"

#include "station/io/systemtext.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cerrno>

namespace morsehost {

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

} // namespace morsehost
