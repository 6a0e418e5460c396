// SPDX-License-Identifier: MIT
#include "station/archive/passinglistener.h"

namespace morsehost {

PassingListener::PassingListener(StationListener& next)
    : m_next(next)
{
}

void PassingListener::time(unsigned long long time_us)
{
    m_next.time(time_us);
}

void PassingListener::symbol(int code)
{
    m_next.symbol(code);
}

void PassingListener::text(const QString& text)
{
    m_next.text(text);
}

void PassingListener::unknownCode(const QString& elements)
{
    m_next.unknownCode(elements);
}

void PassingListener::transmission(const Transmission& transmission)
{
    m_next.transmission(transmission);
}

void PassingListener::saving(const QString& message)
{
    m_next.saving(message);
}

} // namespace morsehost
