// SPDX-License-Identifier: MIT
#include "app/output.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace morsehost {

void Output::write(const QByteArray& data)
{
    const char* next = data.constData();
    auto left = static_cast<std::size_t>(data.size());
    while (left > 0 && !hasFailed()) {
        const ssize_t written = ::write(m_descriptor, next, left);
        if (written >= 0) {
            next += written;
            left -= static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            pollfd waiting = {m_descriptor, POLLOUT, 0};
            ::poll(&waiting, 1, -1);
        } else if (errno == EPIPE) {
            m_closed = true;
        } else if (errno != EINTR) {
            m_error = QString::fromLocal8Bit(std::strerror(errno));
        }
    }
}

} // namespace morsehost
