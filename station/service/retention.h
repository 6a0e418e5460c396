// SPDX-License-Identifier: MIT
// Files in a folder a day: which of them go, and when.
#pragma once

#include <QString>
#include <QStringList>

namespace morsehost {

/// Removes folders of days ("2026-11-22") below `folder`: those more than `keepDays` days before
/// `today` (0: none), then the oldest until the rest has at most `keepBytes` (0: all may stay).
/// Today's folder stays. Returns the days that were removed.
QStringList removeOldDays(const QString& folder, int keepDays, qint64 keepBytes,
                          const QString& today);

/// The time before which nothing stays, in microseconds since 1970-01-01 00:00 UTC: the begin of
/// the day that is `keepDays` days before `today`.
qint64 beginOfKeptDays_us(const QString& today, int keepDays);

} // namespace morsehost
