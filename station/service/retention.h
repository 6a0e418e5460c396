// SPDX-License-Identifier: MIT
// Files in a folder a day: which of them go, and when.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace morsehost {

/// Removes folders of days ("2026-11-22") below `folder`: those more than `keepDays` days before
/// `today` (0: none), then the oldest until the rest has at most `keepBytes` (0: all may stay).
/// Today's folder stays. Returns the days that were removed.
QStringList removeOldDays(const QString& folder, int keepDays, qint64 keepBytes,
                          const QString& today);

/// The time before which nothing stays, in microseconds since 1970-01-01 00:00 UTC: the begin of
/// the day that is `keepDays` days before `today`.
qint64 beginOfKeptDays_us(const QString& today, int keepDays);

/// Whether the day of the clock may be relied on for what is removed. A clock that was set by more
/// than an hour is not relied on for a day of running, in which it can be set right.
class SteadyClock
{
public:
    /// To be asked now and then, with the time of day and that of a clock that is never set.
    bool isSteady(qint64 wall_ms, qint64 monotonic_ms);

private:
    std::optional<qint64> m_difference_ms; ///< between both, when they were asked last
    std::optional<qint64> m_steadyFrom_ms; ///< of the clock that is never set
};

} // namespace morsehost
