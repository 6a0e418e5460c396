// SPDX-License-Identifier: MIT
// Operators cut a zero short: a lone dash right after a digit means "0".
// No API: used inside the library only.
#pragma once

#include <QString>

/// Whether `text` is a digit that a cut zero may follow.
inline bool isOneDigit(const QString& text)
{
    return text.size() == 1 && text[0] >= QLatin1Char('0') && text[0] <= QLatin1Char('9');
}

/// The text of a code, which `find(code)` knows from the alphabet, with the cut zero applied.
/// Keeps `lastWasDigit` up to date for the next code.
template <typename Find>
QString decodeWithCutZero(QStringView code, bool& lastWasDigit, Find find)
{
    const bool isCutZero = lastWasDigit && code == QLatin1Char('-');
    QString text = isCutZero ? QStringLiteral("0") : find(code);
    lastWasDigit = isOneDigit(text);
    return text;
}
