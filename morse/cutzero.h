// SPDX-License-Identifier: MIT
// Operators cut a zero short: a lone dash right after a digit means "0".
// No API: used inside the library only.
#pragma once

#include "morse/codeindex.h"
#include "morse/digit.h"

/// The text of a code with the cut zero applied; empty for an unknown code. Keeps `lastWasDigit` up
/// to date for the next code. The result lives as long as the alphabet.
inline const QString& decodeWithCutZero(const CodeIndex& index, const CodeBuffer& code,
                                        bool& lastWasDigit)
{
    static const QString CUT_ZERO = QStringLiteral("0");
    static const QString UNKNOWN;
    const bool isCutZero = lastWasDigit && code.Symbols() == QLatin1Char('-');
    const QString* text = isCutZero ? &CUT_ZERO : index.Find(code);
    if (!text)
        text = &UNKNOWN;
    lastWasDigit = isDigit(*text);
    return *text;
}
