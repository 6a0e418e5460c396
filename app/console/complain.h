// SPDX-License-Identifier: MIT
// The one line on standard error that says why something cannot be done.
#pragma once

#include <QString>

namespace morsehost {

/// "morsehost: SUBJECT: REASON"
void complain(const QString& subject, const QString& reason);
/// "morsehost: REASON"
void complain(const QString& reason);

/// The exit status of a command that ended with this error, which is said; empty for none.
int statusAfter(const QString& error);

} // namespace morsehost
