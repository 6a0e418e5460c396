// SPDX-License-Identifier: MIT
// The spectrum of a recording for a waterfall, at the speed at which it sounds: its decoder reads
// it itself, and faster.
#pragma once

#include "station/audio/bandsource.h"
#include "station/service/spectrumtap.h"
#include "station/service/stationfile.h"

#include <memory>
#include <vector>

namespace morsehost {

class RecordingTap
{
public:
    /// Of what cannot be read there are no rows.
    explicit RecordingTap(const ReceiverSettings& settings);

    /// Rows of the next so many seconds.
    std::vector<QJsonObject> advance(double time_s);

private:
    std::unique_ptr<BandSource> m_source; ///< null when there is nothing (more) to be read
    std::unique_ptr<SpectrumTap> m_tap;
    double m_rate_Hz = 0;
};

} // namespace morsehost
