// SPDX-License-Identifier: MIT
// Words for what the system reports, and for how many of a thing there are.
#pragma once

#include <QString>

namespace morsehost {

/// What a value of errno means.
QString systemError(int number);

/// Why nothing can be read at `path`; empty when something can, be it a pipe or a device.
QString whyUnreadable(const QString& path);

/// The same of a regular file.
QString whyNoRegularFile(const QString& path);

/// Why there is no readable folder at `path`; empty when there is one.
QString whyNoFolder(const QString& path);

/// "1 channel", "2 channels"
QString counted(long long count, const char* one, const char* several);

} // namespace morsehost
