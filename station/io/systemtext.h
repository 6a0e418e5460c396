// SPDX-License-Identifier: MIT
// Words for what the system reports, and for how many of a thing there are.
#pragma once

#include <QString>

namespace morsehost {

/// What a value of errno means.
QString systemError(int number);

/// Why no file can be read at `path`; empty when one can.
QString whyUnreadable(const QString& path);

/// "1 channel", "2 channels"
QString counted(long long count, const char* one, const char* several);

} // namespace morsehost
