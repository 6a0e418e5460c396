// SPDX-License-Identifier: MIT
// The program as a user runs it: words and input in, both outputs and the exit status out.
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>

namespace testsupport {

struct Ended
{
    int status; ///< -1 when it crashed or did not end
    QByteArray out;
    QByteArray err;
};

/// Waits two minutes at most.
inline Ended end(QProcess& process)
{
    if (!process.waitForFinished(120000))
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

} // namespace testsupport
