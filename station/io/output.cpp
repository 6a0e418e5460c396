// SPDX-License-Identifier: MIT
#include "station/io/output.h"

#include "station/io/interrupt.h"
#include "station/io/systemtext.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

namespace morsehost {

void Output::write(const QByteArray& data)
{
    const char* next = data.constData();
    auto left = static_cast<std::size_t>(data.size());
    while (left > 0 && !hasFailed()) {
        if (m_descriptor < 0) { // poll would wait for it
            m_error = systemError(EBADF);
            break;
        }
        // A reader that stands still must not keep a program that is to end.
        pollfd waiting = {m_descriptor, POLLOUT, 0};
        if (::poll(&waiting, 1, 200) <= 0) {
            m_closed = isInterrupted();
            continue;
        }
        // No more than a pipe that is ready takes without waiting.
        const ssize_t written = ::write(m_descriptor, next, std::min(left, std::size_t(PIPE_BUF)));
        if (written >= 0) {
            next += written;
            left -= static_cast<std::size_t>(written);
        } else if (errno == EPIPE) {
            m_closed = true;
        } else if (errno != EINTR && errno != EAGAIN) {
            m_error = systemError(errno);
        }
    }
}

} // namespace morsehost
