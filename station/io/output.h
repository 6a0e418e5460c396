// SPDX-License-Identifier: MIT
// Bytes to a descriptor, at once.
#pragma once

#include <QByteArray>
#include <QString>

namespace morsehost {

/// What to do with a reader that takes nothing.
enum class WhenBusy {
    Wait, ///< until it reads on, or the program is interrupted
    Keep, ///< go on, and keep up to 16 MiB for it
};

class Output
{
public:
    explicit Output(int descriptor, WhenBusy whenBusy = WhenBusy::Wait)
        : m_descriptor(descriptor)
        , m_whenBusy(whenBusy)
    {
    }

    /// Writes all of it, or keeps it for later, unless the output has failed before.
    void write(const QByteArray& data);
    /// Writes what was kept, waiting for the reader. An interrupted program does not wait: the
    /// output counts as closed then.
    void finish();

    bool isTerminal() const;
    /// The reader has gone: there is no use in going on, and nothing to complain about.
    bool isClosed() const { return m_closed; }
    /// Any other failure, such as a full disk; empty when there is none.
    const QString& error() const { return m_error; }
    bool hasFailed() const { return m_closed || !m_error.isEmpty(); }

private:
    void writeKept(bool wait);

    int m_descriptor;
    WhenBusy m_whenBusy;
    QByteArray m_kept;
    int m_written = 0;    ///< bytes of it that need not be kept any more
    bool m_isCut = false; ///< more would have had to be kept
    bool m_closed = false;
    QString m_error;
};

} // namespace morsehost
