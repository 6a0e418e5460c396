// SPDX-License-Identifier: MIT
// What one reader of live events has not been sent yet.
#pragma once

#include <QByteArray>

#include <functional>
#include <mutex>
#include <string>

namespace morsehost {

/// Filled by one thread, emptied by another. Bounded: a reader that takes too little is dropped,
/// and gets the whole state when it comes back.
class EventStream
{
public:
    explicit EventStream(std::size_t mostBytes = std::size_t{1} << 20);

    /// False when the stream is closed, also by this call, because too much waits.
    bool push(const QByteArray& event);
    bool isWaiting() const;
    /// All that waits; empty when nothing does.
    std::string take();
    void close();
    bool isClosed() const;
    /// Called after each push and when the stream is closed, from that thread; at once when there
    /// is something already. Without a function nobody is called any more, also not by a push that
    /// has begun.
    void onChange(std::function<void()> wake);

private:
    const std::size_t m_mostBytes;
    mutable std::mutex m_mutex;
    std::string m_waiting;
    bool m_isClosed = false;
    std::function<void()> m_wake;
};

} // namespace morsehost
