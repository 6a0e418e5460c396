// SPDX-License-Identifier: MIT
// The program as a user runs it: words and input in, both outputs and the exit status out.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QStringList>

#include <csignal>

namespace testsupport {

/// Only ends a test that hangs: far longer than anything takes on a machine with much else to do.
constexpr int HANGS_ms = 600000;

struct Ended
{
    int status; ///< -1 when it crashed or did not end
    QByteArray out;
    QByteArray err;
};

inline Ended end(QProcess& process)
{
    if (!process.waitForFinished(HANGS_ms))
        process.kill();
    const int status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return {status, process.readAllStandardOutput(), process.readAllStandardError()};
}

inline Ended run(const QStringList& words, const QByteArray& input = QByteArray())
{
    QProcess process;
    process.start(QStringLiteral(MORSEHOST_PATH), words);
    process.write(input);
    process.closeWriteChannel();
    return end(process);
}

/// Whether the program handles SIGTERM by now, and sleeps: waits for input or to be read.
inline bool isWaiting(const QProcess& process)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(process.processId()));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray state;
    quint64 caught = 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("State:"))
            state = line.mid(6).trimmed();
        if (line.startsWith("SigCgt:"))
            caught = line.mid(7).trimmed().toULongLong(nullptr, 16);
    }
    return state.startsWith('S') && (caught >> (SIGTERM - 1) & 1) != 0;
}

} // namespace testsupport
