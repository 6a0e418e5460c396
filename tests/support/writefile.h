// SPDX-License-Identifier: MIT
// Files that a test makes up.
#pragma once

#include <QFile>
#include <QString>

#include <stdexcept>

/// Returns `path`, so that the file can be used where it is written.
inline QString writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.flush())
        throw std::runtime_error("cannot write " + path.toStdString());
    return path;
}
