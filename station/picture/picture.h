// SPDX-License-Identifier: MIT
// Notes as a picture: SVG, complete in itself.
#pragma once

#include "station/picture/notes.h"

#include <QByteArray>
#include <QString>

namespace inspect {

/// Longest stretch that is drawn; a picture takes some 60 kB for each row of 10 s.
constexpr double LONGEST_STRETCH_s = 600.0;

/// In each row: the spectrogram with the tone that is followed, the tone's strength with what is
/// expected of it, marks and gaps, the text, and the time. `title` stands above all of it.
QByteArray picture(const Seen& seen, const QString& title);

} // namespace inspect
