// SPDX-License-Identifier: MIT
// Bytes from a descriptor as they arrive.
#pragma once

#include <QString>

#include <atomic>
#include <cstddef>

namespace morsehost {

class Input
{
public:
    explicit Input(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    /// Waits for the first byte, then gives what is there, `size` bytes at most. 0 at the end of
    /// input, after an error, or when the program was interrupted.
    std::size_t read(char* data, std::size_t size);

    /// From any thread: a reader that waits for bytes gets none, now and later.
    void stop() { m_isStopped = true; }

    /// Empty when the input ended as it should.
    const QString& error() const { return m_error; }

private:
    int m_descriptor;
    QString m_error;
    std::atomic<bool> m_isStopped{false};
};

} // namespace morsehost
