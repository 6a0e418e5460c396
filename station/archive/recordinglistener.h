// SPDX-License-Identifier: MIT
// Collects what a recording holds until it is over, for the archive, and passes all of it on.
#pragma once

#include "station/archive/record.h"
#include "station/stationlistener.h"

#include <vector>

namespace morsehost {

class RecordingListener : public StationListener
{
public:
    /// The next one outlives it.
    explicit RecordingListener(StationListener& next);

    void time(unsigned long long time_us) override;
    void symbol(int code) override;
    void text(const QString& text) override;
    void unknownCode(const QString& elements) override;
    void transmission(const Transmission& transmission) override;
    void saving(const QString& message) override;

    const std::vector<ArchiveRecord>& records() const { return m_records; }

private:
    StationListener& m_next;
    std::vector<ArchiveRecord> m_records;
};

} // namespace morsehost
