// SPDX-License-Identifier: MIT
#include "station/archive/archivelistener.h"

namespace morsehost {

ArchiveListener::ArchiveListener(StationListener& next, ArchiveWriter& archive)
    : PassingListener(next)
    , m_archive(archive)
{
}

void ArchiveListener::transmission(const Transmission& transmission)
{
    if (!m_archive.add(archiveRecordOf(QString(), transmission)))
        ++m_lost;
    PassingListener::transmission(transmission);
}

} // namespace morsehost
