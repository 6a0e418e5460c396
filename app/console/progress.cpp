// SPDX-License-Identifier: MIT
#include "app/console/progress.h"

#include <cstdio>
#include <unistd.h>

namespace morsehost {

Progress::Progress()
    : m_isWanted(isatty(STDERR_FILENO) != 0)
    , m_sharesTerminal(isatty(STDOUT_FILENO) != 0)
{
}

Progress::~Progress()
{
    erase();
}

void Progress::show(double fraction)
{
    const int percent = static_cast<int>(100.0 * fraction);
    if (!m_isWanted || percent == m_percent || (m_sharesTerminal && m_lineIsOpen))
        return;
    m_percent = percent;
    m_isDrawn = true;
    std::fprintf(stderr, "\r%3d %%", percent);
    std::fflush(stderr);
}

void Progress::makeRoom(bool lineStaysOpen)
{
    if (!m_sharesTerminal)
        return;
    erase();
    m_lineIsOpen = lineStaysOpen;
}

void Progress::erase()
{
    if (!m_isDrawn)
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    m_isDrawn = false;
}

} // namespace morsehost
