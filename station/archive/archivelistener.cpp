// SPDX-License-Identifier: MIT
#include "station/archive/archivelistener.h"

namespace morsehost {

ArchiveListener::ArchiveListener(StationListener& next, ArchiveWriter& archive)
    : m_next(next)
    , m_archive(archive)
{
}

void ArchiveListener::time(unsigned long long time_us)
{
    m_next.time(time_us);
}

void ArchiveListener::symbol(int code)
{
    m_next.symbol(code);
}

void ArchiveListener::text(const QString& text)
{
    m_next.text(text);
}

void ArchiveListener::unknownCode(const QString& elements)
{
    m_next.unknownCode(elements);
}

void ArchiveListener::transmission(const Transmission& transmission)
{
    ArchiveRecord record;
    record.transmission = transmission;
    record.key = archiveKey(QString(), transmission);
    if (!m_archive.add(record))
        ++m_lost;
    m_next.transmission(transmission);
}

void ArchiveListener::saving(const QString& message)
{
    m_next.saving(message);
}

} // namespace morsehost
