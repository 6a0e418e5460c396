// SPDX-License-Identifier: MIT
// Whether the blocks of a page are true: its sessions are run, its code is that of the files.
#pragma once

#include "docs/pages.h"

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace pages {

/// Where a reader types: a folder in which the commands of a page may leave files behind.
class Shell
{
public:
    /// A wrapper is a command that runs the one behind it somewhere else, such as chroot; it says
    /// in which folder. Without one, commands are run in the folder given.
    Shell(QString folder, QProcessEnvironment environment, QStringList wrapper = {});

    /// What a script prints on both channels.
    QString run(const QString& script, int* status, const QStringList& options = {},
                const QString& input = {}) const;
    /// False if the file could not be written.
    bool write(const QString& name, const QString& content) const;
    /// Empty if there is no such file.
    QString contentOf(const QString& name) const;

private:
    QString m_folder;
    QProcessEnvironment m_environment;
    QStringList m_wrapper;
};

/// Who follows a page: somebody in a clone, or somebody who has a bare machine and the packages.
enum class Reader { InAClone, OnABareMachine };

/// Everything that is wrong with the blocks of a page.
QStringList checkBlocks(const Page& page, const Shell& shell, Reader reader);

/// How many blocks of a page such a reader runs.
int runBlocks(const Page& page, Reader reader);

/// What leads nowhere. A page's name and links are taken from the folder given.
QStringList checkLinks(const Page& page, const QVector<Page>& all, const QString& folder);

} // namespace pages
