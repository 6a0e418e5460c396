// SPDX-License-Identifier: MIT
// A folder for what is kept, tried before hours of reception depend on it; and folders of days.
#pragma once

#include <QString>

namespace morsehost {

/// Creates the folder, with those above it. Returns why no file can be written there; empty when
/// one can, which only writing one shows: the system may refuse for many reasons.
QString makeWritable(const QString& folder);

/// The same of a folder whose name may hold "{day}": that of its days lies above.
QString makeWritableForDays(const QString& folder);
/// `folder` with the day for each "{day}": of that time, microseconds since 1970-01-01 00:00 UTC.
QString folderOfDay(QString folder, qint64 time_us);

} // namespace morsehost
