// SPDX-License-Identifier: MIT
#include "station/io/folderlock.h"

#include "station/io/systemtext.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace morsehost {

namespace {

QString lockFault(int error)
{
    switch (error) {
    case EWOULDBLOCK:
        return QStringLiteral("another station uses this folder");
    case EOPNOTSUPP:
    case ENOLCK:
    case ENOSYS:
        return QStringLiteral("the file system has no locks, which keep a second station out; "
                              "choose a folder on a disk of this machine");
    default:
        return QStringLiteral("the folder cannot be locked: ") + systemError(error);
    }
}

} // namespace

FolderLock::FolderLock(const QString& folder)
    : m_file(::open(QFile::encodeName(folder + QStringLiteral("/.lock")).constData(),
                    O_RDWR | O_CREAT | O_CLOEXEC, 0666))
{
    if (m_file >= 0 && flock(m_file, LOCK_EX | LOCK_NB) == 0)
        return;
    m_error = lockFault(errno);
}

// The file stays: another process may have opened it already.
FolderLock::~FolderLock()
{
    if (m_file >= 0)
        ::close(m_file);
}

} // namespace morsehost
