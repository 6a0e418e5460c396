// SPDX-License-Identifier: MIT
// Lines that wait on disk until somebody has taken them: in order, each once, across a crash.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <vector>

namespace morsehost {

/// A folder of files that lines are appended to. Used by one process and one thread at a time.
///
/// A line counts once `append` has returned true; a crash in the middle of a line loses that line
/// alone. What has been taken stays taken: `take` is called after the receiver has it, so a crash
/// between the two gives the same lines again, which the receiver has to know by their keys.
class Spool
{
public:
    /// Begins where the last one in that folder ended.
    explicit Spool(const QString& folder);

    /// Why that folder, made when it is missing, cannot be used; empty when it can.
    static QString folderFault(const QString& folder);

    /// Why the folder cannot be used; empty when it can.
    const QString& error() const { return m_error; }

    /// `line` has no line end. False when it is not safely on disk; then it does not count.
    bool append(const QByteArray& line);
    /// The oldest that wait: `most` at most, and none beyond the one with which they are 4 MiB
    /// long. A line of any length comes back whole.
    std::vector<QByteArray> oldest(int most);
    /// The oldest `count` have been received.
    bool take(int count);
    /// Bytes that wait.
    qint64 size() const;

private:
    struct Position
    {
        qint64 file = 1;
        qint64 offset = 0;
    };

    QString path(qint64 number) const;
    void readPosition();
    bool writePosition(const Position& position);

    QString m_folder;
    QFile m_output;
    qint64 m_lastFile = 1;
    Position m_taken;
    std::vector<Position> m_ends; ///< behind each line that `oldest` gave
    QString m_error;
};

} // namespace morsehost
