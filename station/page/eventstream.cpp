// SPDX-License-Identifier: MIT
#include "station/page/eventstream.h"

#include <utility>

namespace morsehost {

EventStream::EventStream(std::size_t mostBytes)
    : m_mostBytes(mostBytes)
{
}

bool EventStream::push(const QByteArray& event)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isClosed)
        return false;
    const auto size = static_cast<std::size_t>(event.size());
    m_isClosed = m_waiting.size() + size > m_mostBytes;
    if (m_isClosed)
        m_waiting.clear();
    else
        m_waiting.append(event.constData(), size);
    if (m_wake)
        m_wake();
    return !m_isClosed;
}

bool EventStream::isWaiting() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return !m_waiting.empty();
}

std::string EventStream::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_waiting, {});
}

void EventStream::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isClosed = true;
    if (m_wake)
        m_wake();
}

bool EventStream::isClosed() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isClosed;
}

void EventStream::onChange(std::function<void()> wake)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wake = std::move(wake);
    if (m_wake && (!m_waiting.empty() || m_isClosed))
        m_wake();
}

} // namespace morsehost
