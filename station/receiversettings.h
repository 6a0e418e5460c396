// SPDX-License-Identifier: MIT
// Tuner and demodulator, for the library's request for them. The result document does not keep
// them.
#pragma once

#include "signal/morse/demodulator.h"
#include "station/transmission.h"

#include <QString>

namespace morsehost {

/// XML: the frequency, the rate, and tone and speed that were asked for; tone, speed and signal to
/// noise ratio as found where the transmission has them.
QString receiverSettings(const demodulator::Settings& demodulator,
                         const Transmission& transmission);

} // namespace morsehost
