// SPDX-License-Identifier: MIT
// Files in a folder a day: which of them go, and when.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace morsehost {

struct FileLimits
{
    QString folder;       ///< that of the folders of days
    int keepDays = 0;     ///< 0: for ever
    qint64 keepBytes = 0; ///< 0: all may stay
    QString today;        ///< "2026-11-22"
    qint64 now_ms = 0;    ///< since 1970-01-01 00:00 UTC
};

struct RemovedFiles
{
    QStringList days;
    int ofToday = 0;
};

/// Remembers what folders of past days hold, for a day.
class FileKeeper
{
public:
    /// Removes folders of days ("2026-11-22"): those more than `keepDays` days before today, then
    /// the oldest until the rest is small enough. Today's folder stays: when it alone is too large,
    /// its oldest files go, but for those that were written to in the last ten minutes.
    RemovedFiles keep(const FileLimits& limits);

private:
    qint64 bytesOf(const QString& day, const FileLimits& limits);

    QMap<QString, qint64> m_bytes; ///< of past days
    QString m_day;                 ///< on which they were counted
};

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
