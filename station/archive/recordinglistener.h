// SPDX-License-Identifier: MIT
// Collects what a recording holds until it is over, for the archive, and passes all of it on.
#pragma once

#include "station/archive/passinglistener.h"
#include "station/archive/record.h"

#include <vector>

namespace morsehost {

class RecordingListener : public PassingListener
{
public:
    using PassingListener::PassingListener;

    void transmission(const Transmission& transmission) override;

    const std::vector<ArchiveRecord>& records() const { return m_records; }

private:
    std::vector<ArchiveRecord> m_records;
};

} // namespace morsehost
