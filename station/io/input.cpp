// SPDX-License-Identifier: MIT
#include "station/io/input.h"

#include "station/io/interrupt.h"
#include "station/io/systemtext.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace morsehost {

std::size_t Input::read(char* data, std::size_t size)
{
    while (!isInterrupted() && !m_isStopped && m_error.isEmpty()) {
        if (m_descriptor < 0) { // poll would wait for it
            m_error = systemError(EBADF);
            break;
        }
        // The time-out closes the gap between asking for the flag and waiting.
        pollfd waiting = {m_descriptor, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, 200);
        if (ready == 0 || (ready < 0 && errno == EINTR))
            continue;
        const ssize_t got = ::read(m_descriptor, data, size);
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR && errno != EAGAIN)
            m_error = systemError(errno);
    }
    return 0;
}

} // namespace morsehost
