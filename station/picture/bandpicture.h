// SPDX-License-Identifier: MIT
// A band as a picture: SVG, complete in itself.
#pragma once

#include "station/picture/waterfall.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

namespace inspect {

/// What was decoded of one signal, at one moment.
struct BandText
{
    int number; ///< of the signal
    double tone_Hz;
    std::int64_t time_us; ///< of the end of its last mark, since the first sample
    QString text;         ///< a character, or a blank
};

/// Highest waterfall, in rows of the picture; wider bands are drawn coarser.
constexpr int HIGHEST_BAND_PIXELS = 4000;

/// Rows for this many hertz so that signals 160 Hz apart can be read.
int bandRows(double width_Hz);

/// A row a minute, or one for a shorter stretch: the waterfall, time to the right, with each
/// signal's text along its trace. `center_Hz` is what 0 Hz of the band is.
QByteArray bandPicture(const BandPowers& powers, const std::vector<BandText>& texts,
                       const Stretch& stretch, double center_Hz, const QString& title);

} // namespace inspect
