// SPDX-License-Identifier: MIT
#include "station/io/descriptor.h"

#include "station/io/systemtext.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morsehost {

Descriptor::Descriptor(const QString& name)
    : m_name(name)
{
    if (name == QLatin1String("-")) {
        m_name = QStringLiteral("standard input");
        m_number = STDIN_FILENO;
        return;
    }
    m_number = ::open(QFile::encodeName(name).constData(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (m_number < 0)
        m_error = systemError(errno);
    else if (fstat(m_number, &status) == 0 && S_ISDIR(status.st_mode))
        m_error = QStringLiteral("is a folder");
}

Descriptor::~Descriptor()
{
    if (m_number > STDIN_FILENO)
        ::close(m_number);
}

} // namespace morsehost
