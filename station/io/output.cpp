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

namespace {

constexpr int MAX_KEPT_BYTES = 16 << 20;
constexpr int PATIENCE_MS = 200;

} // namespace

void Output::write(const QByteArray& data)
{
    if (hasFailed())
        return;
    m_isCut = m_isCut || m_kept.size() - m_written > MAX_KEPT_BYTES - data.size();
    if (m_isCut)
        return;
    m_kept += data;
    writeKept(m_whenBusy == WhenBusy::Wait);
}

bool Output::isTerminal() const
{
    return ::isatty(m_descriptor) != 0;
}

void Output::finish()
{
    writeKept(true);
    if (m_isCut && !hasFailed())
        m_error = QStringLiteral("the reader was too slow, the end was not shown");
}

void Output::writeKept(bool wait)
{
    while (m_written < m_kept.size() && !hasFailed()) {
        if (m_descriptor < 0) { // poll would wait for it
            m_error = systemError(EBADF);
            break;
        }
        pollfd waiting = {m_descriptor, POLLOUT, 0};
        if (::poll(&waiting, 1, wait ? PATIENCE_MS : 0) <= 0) {
            if (!wait)
                break;
            m_closed = isInterrupted();
            continue;
        }
        // No more than a pipe that is ready takes without waiting.
        const auto size = static_cast<std::size_t>(std::min(m_kept.size() - m_written, PIPE_BUF));
        const ssize_t got = ::write(m_descriptor, m_kept.constData() + m_written, size);
        if (got >= 0)
            m_written += static_cast<int>(got);
        else if (errno == EPIPE)
            m_closed = true;
        else if (errno != EINTR && errno != EAGAIN)
            m_error = systemError(errno);
    }
    // Moving the rest costs time, so it is done seldom.
    if (m_written == m_kept.size() || m_written > MAX_KEPT_BYTES / 2) {
        m_kept.remove(0, m_written);
        m_written = 0;
    }
}

} // namespace morsehost
