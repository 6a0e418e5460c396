// SPDX-License-Identifier: MIT
// The host's date-time class: a moment, an offset from UTC and a format.
#pragma once

#include "host/hostapi.h"

#include <QDateTime>
#include <QString>

namespace Vanth {

/// Formats moments. A new object stands at the moment it was made, with offset 0 (UTC) and the
/// format "yyyy-MM-dd hh:mm:ss".
class HOST_API DateTime
{
public:
    /// An offset for `setOffsetFromUTC`: the local zone's, as it is at the moment formatted, so
    /// that daylight saving time counts.
    static const long long Local_TimeZone;

    DateTime();
    /// At `moment`, whatever its time zone; offset and format as above.
    explicit DateTime(const QDateTime& moment);

    /// Microseconds since 1970-01-01 00:00 UTC.
    void setTime_ts(unsigned long long timestamp_us);
    /// Seconds east of UTC, less than a day; or `Local_TimeZone`.
    void setOffsetFromUTC(long long offset_s);
    /// Qt's date-time patterns.
    void setFormatString(QString format);

    /// Empty when the moment was made from an invalid `QDateTime`.
    QString toString() const;
    /// The same in another format.
    QString toString(const QString& format) const;

private:
    QDateTime m_moment; ///< UTC
    long long m_offset_s = 0;
    QString m_format;
};

} // namespace Vanth
