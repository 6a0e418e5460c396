// SPDX-License-Identifier: MIT
// The program as a user runs it at a terminal: what it writes there.
#pragma once

#include "support/program.h"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace testsupport {

/// Standard output is a terminal that changes nothing in what is written; `out` is all of it.
inline Ended runAtTerminal(const QStringList& words, const QByteArray& input = QByteArray())
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        return {-1, QByteArray(), "no terminal"};
    const QString name = QString::fromLocal8Bit(ptsname(master));
    // Kept open, so that nothing is lost when the program closes its end.
    const int terminal = open(name.toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
    termios raw = {};
    tcgetattr(terminal, &raw);
    cfmakeraw(&raw);
    tcsetattr(terminal, TCSANOW, &raw);

    QProcess process;
    process.setStandardOutputFile(name);
    process.start(QStringLiteral(MORSEHOST_PATH), words);
    process.write(input);
    process.closeWriteChannel();
    QByteArray out;
    const auto drain = [&out, master](int wait_ms) {
        pollfd waiting = {master, POLLIN, 0};
        char bytes[4096];
        while (poll(&waiting, 1, wait_ms) > 0) {
            const ssize_t count = read(master, bytes, sizeof bytes);
            if (count <= 0)
                return;
            out.append(bytes, static_cast<int>(count));
        }
    };
    while (process.state() != QProcess::NotRunning) {
        drain(0);
        process.waitForFinished(10);
    }
    drain(0);
    close(terminal);
    close(master);
    Ended ended = end(process);
    ended.out = out;
    return ended;
}

} // namespace testsupport
