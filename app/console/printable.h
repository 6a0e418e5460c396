// SPDX-License-Identifier: MIT
// Text from files and names, made harmless: it gives a terminal no orders.
#pragma once

#include <QString>

namespace morsehost {

/// Control characters but line feed and tab are replaced by U+FFFD.
QString printable(QString text);
/// Line feed and tab as well, so that it stays one line and one field.
QString printableLine(QString text);
/// A text of several lines on one: white space of any kind is one blank.
QString onOneLine(const QString& text);

} // namespace morsehost
