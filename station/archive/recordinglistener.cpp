// SPDX-License-Identifier: MIT
#include "station/archive/recordinglistener.h"

namespace morsehost {

RecordingListener::RecordingListener(StationListener& next)
    : m_next(next)
{
}

void RecordingListener::time(unsigned long long time_us)
{
    m_next.time(time_us);
}

void RecordingListener::symbol(int code)
{
    m_next.symbol(code);
}

void RecordingListener::text(const QString& text)
{
    m_next.text(text);
}

void RecordingListener::unknownCode(const QString& elements)
{
    m_next.unknownCode(elements);
}

void RecordingListener::transmission(const Transmission& transmission)
{
    ArchiveRecord record;
    record.transmission = transmission;
    record.key = archiveKey(QString(), transmission);
    m_records.push_back(record);
    m_next.transmission(transmission);
}

void RecordingListener::saving(const QString& message)
{
    m_next.saving(message);
}

} // namespace morsehost
