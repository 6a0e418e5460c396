// SPDX-License-Identifier: MIT
// Files that a test makes up or looks into.
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

/// A file that cannot be read has a content of its own, which no test expects.
inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}
