// SPDX-License-Identifier: MIT
// Beside the files of each transmission of a band a picture of it: the waterfall around it.
#pragma once

#include "app/options/bandoptions.h"
#include "station/bandstation.h"
#include "station/picture/bandpicture.h"
#include "station/picture/recentband.h"

#include <QString>

#include <complex>
#include <cstddef>
#include <cstdint>
#include <deque>

namespace morsehost {

/// Stands behind a station: adds the path of the picture to each transmission. Memory is bounded.
class BandPictures : public PassingBandListener
{
public:
    /// Of what is kept in `folder`, that of the station, from `start_us` on. The next listener
    /// outlives this.
    BandPictures(BandListener& next, const BandChoice& choice,
                 const demodulator::BandFormat& format, const QString& folder,
                 unsigned long long start_us);

    /// Before what is heard in them.
    void push(const std::complex<float>* samples, std::size_t count);

    void text(const BandEntry& signal, const QString& text, std::int64_t time_us) override;
    void transmission(const Transmission& transmission) override;

private:
    QByteArray draw(const Transmission& transmission) const;

    double m_center_Hz;
    double m_rate_Hz;
    QString m_folder;
    qint64 m_start_us;
    inspect::RecentBand m_recent;
    std::deque<inspect::BandText> m_texts; ///< as far back as pictures reach
    double m_heard_us = 0.0;
};

} // namespace morsehost
