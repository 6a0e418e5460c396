// SPDX-License-Identifier: MIT
// A sound by its name, with what is known of the signal in it.
#pragma once

#include "signal/morse/demodulator.h"
#include "signal/teleprinter/teleprinterreceiver.h"
#include "station/audio/samplesource.h"

#include <QString>

#include <memory>
#include <optional>

namespace morsehost {

struct SoundRequest
{
    QString name; ///< path of a recording, or of standard input its name in messages
    bool isPipe = false;
    std::optional<int> channel;
    std::optional<int> rate_Hz;                ///< of raw samples
    QString decoder = QStringLiteral("Morse"); ///< what it is heard as
    demodulator::Settings demodulator;         ///< for Morse
    teleprinter::Settings teleprinter;         ///< for any other decoder
};

/// Opens it, and sets the rate of both demodulators. Nothing is read of a terminal.
OpenedSource openSound(SoundRequest& request);

} // namespace morsehost
