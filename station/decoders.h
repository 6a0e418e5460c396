// SPDX-License-Identifier: MIT
// The names of the decoder modules table that there is a demodulator for.
#pragma once

#include "signal/teleprinter/line.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace morsehost {

constexpr char MORSE_DECODER[] = "Morse";

/// The teleprinter's decoder of a code, and the code of a decoder; none for Morse and any other.
QString decoderOf(teleprinter::Code code);
std::optional<teleprinter::Code> codeOfDecoder(const QString& decoder);

QStringList teleprinterDecoders();

/// What its transmissions are like; null for Morse and any other.
struct TeleprinterDecoder
{
    const char* name;
    teleprinter::Code code;
    double lowestBaud;
    double highestBaud;
    bool hasShifts; ///< to letters and to figures
};
const TeleprinterDecoder* teleprinterDecoder(const QString& decoder);

/// The name as the table writes it, however it was typed; any other name as it is.
QString decoderSpelled(const QString& name);

} // namespace morsehost
