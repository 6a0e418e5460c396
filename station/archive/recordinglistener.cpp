// SPDX-License-Identifier: MIT
#include "station/archive/recordinglistener.h"

namespace morsehost {

void RecordingListener::transmission(const Transmission& transmission)
{
    m_records.push_back(archiveRecordOf(QString(), transmission));
    PassingListener::transmission(transmission);
}

} // namespace morsehost
