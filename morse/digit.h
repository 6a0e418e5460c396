// SPDX-License-Identifier: MIT
// The texts after which operators cut a zero short.
// No API: not installed.
#pragma once

#include <QString>

/// Whether it is one of the digits 0 to 9 alone.
inline bool isDigit(const QString& text)
{
    return text.size() == 1 && text.at(0) >= QLatin1Char('0') && text.at(0) <= QLatin1Char('9');
}
