// SPDX-License-Identifier: MIT
// Archives what a station reports, and passes all of it on.
#pragma once

#include "station/archive/passinglistener.h"
#include "station/archive/writer.h"

namespace morsehost {

class ArchiveListener : public PassingListener
{
public:
    /// Both outlive it.
    ArchiveListener(StationListener& next, ArchiveWriter& archive);

    void transmission(const Transmission& transmission) override;

    /// Transmissions that could not even be kept for later.
    long long lost() const { return m_lost; }

private:
    ArchiveWriter& m_archive;
    long long m_lost = 0;
};

} // namespace morsehost
