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

} // namespace morsehost
