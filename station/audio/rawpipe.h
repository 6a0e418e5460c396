// SPDX-License-Identifier: MIT
// Raw samples from a descriptor.
#pragma once

#include "station/audio/samplesource.h"

#include <QByteArray>

namespace morsehost {

/// Signed 16-bit little-endian mono; `begin` was read from the descriptor before.
std::unique_ptr<SampleSource> openRawSamples(int descriptor, const QByteArray& begin,
                                             double sampleRate_Hz);

} // namespace morsehost
