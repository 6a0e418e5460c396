// SPDX-License-Identifier: MIT
// The one line on standard error that says why something cannot be done.
#pragma once

#include <QString>

namespace morsehost {

/// "morsehost: SUBJECT: REASON"
void complain(const QString& subject, const QString& reason);
/// "morsehost: REASON"
void complain(const QString& reason);

} // namespace morsehost
