// SPDX-License-Identifier: MIT
// Notes of a teleprinter as a picture: SVG, complete in itself.
#pragma once

#include "station/picture/teleprinternotes.h"

#include <QByteArray>
#include <QString>

namespace inspect {

/// In each row: the spectrogram with both tones, how strong each of them is in each element, the
/// elements as they were decided, the characters, and the time. `title` stands above all of it.
QByteArray teleprinterPicture(const SeenTeleprinter& seen, const QString& title);

} // namespace inspect
