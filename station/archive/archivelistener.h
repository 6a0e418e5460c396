// SPDX-License-Identifier: MIT
// Archives what a station reports, and passes all of it on.
#pragma once

#include "station/archive/writer.h"
#include "station/stationlistener.h"

namespace morsehost {

class ArchiveListener : public StationListener
{
public:
    /// Both outlive it.
    ArchiveListener(StationListener& next, ArchiveWriter& archive);

    void time(unsigned long long time_us) override;
    void symbol(int code) override;
    void text(const QString& text) override;
    void unknownCode(const QString& elements) override;
    void transmission(const Transmission& transmission) override;
    void saving(const QString& message) override;

    /// Transmissions that could not even be kept for later.
    long long lost() const { return m_lost; }

private:
    StationListener& m_next;
    ArchiveWriter& m_archive;
    long long m_lost = 0;
};

} // namespace morsehost
