// SPDX-License-Identifier: MIT
// Bytes to a descriptor, at once and unbuffered.
#pragma once

#include <QByteArray>
#include <QString>

namespace morsehost {

class Output
{
public:
    explicit Output(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    /// Writes all of it, unless the output has failed before. A reader that takes nothing holds it
    /// up, until the program is interrupted; then the output counts as closed.
    void write(const QByteArray& data);

    /// The reader has gone: there is no use in going on, and nothing to complain about.
    bool isClosed() const { return m_closed; }
    /// Any other failure, such as a full disk; empty when there is none.
    const QString& error() const { return m_error; }
    bool hasFailed() const { return m_closed || !m_error.isEmpty(); }

private:
    int m_descriptor;
    bool m_closed = false;
    QString m_error;
};

} // namespace morsehost
