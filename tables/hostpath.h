// SPDX-License-Identifier: MIT
// Paths as the host spells them, asked of a file system that may spell them otherwise.
// For this project alone: not installed, and not exported by the library.
#pragma once

#include <QDir>
#include <QString>
#include <QStringList>

/// The name under which a file is offered, and whose letter case somebody chose: that of the
/// file up to its first dot.
QString baseNameOf(const QString& fileName);

/// The path under which the file system is asked for `path`.
///
/// The host joins folders with backslashes. Where the separator is "/", a path that does not exist
/// as written is taken with its backslashes as separators when that exists, or when the folder of
/// the path as written does not exist. On any other platform, and otherwise, `path` itself.
QString localPath(const QString& path);

/// `directory` under the path by which the file system knows it.
QDir localFolder(const QDir& directory);

/// The files in `directory` but hidden ones, in ascending order. Nothing for the empty path.
QStringList filesIn(const QDir& directory);

/// Ascending whatever the letter case; names that differ in nothing else, ascending too.
void sortIgnoringCase(QStringList& names);

/// The names of all entries of a folder as they are now, hidden ones included, to look up many.
class FolderNames
{
public:
    explicit FolderNames(const QDir& directory);

    /// The entry called `name`, whatever the letter case: the exact spelling when there is one,
    /// else one that is spelled so up to its first dot (the endings are composed, the rest is what
    /// somebody chose), else the first in ascending order. Empty when there is none, and for a name
    /// with a path separator in it, since names are not paths.
    QString Find(const QString& name) const;

private:
    QStringList m_names; ///< as `sortIgnoringCase` leaves them
};

/// As `FolderNames(directory).Find(name)`, without a listing where the name is spelled exactly.
QString findIgnoringCase(const QDir& directory, const QString& name);

/// The file behind a path whose last part is a composed name: `localPath` where that exists, else
/// the entry of its folder whose name differs in letter case only. Empty when there is none.
QString findFile(const QString& path);
