// SPDX-License-Identifier: MIT
#include "host/datetime.h"

#include <limits>

namespace Vanth {

namespace {

constexpr long long DAY_s = 24LL * 60 * 60;

} // namespace

// No offset that any place on Earth has.
const long long DateTime::Local_TimeZone = std::numeric_limits<long long>::max();

DateTime::DateTime()
    : DateTime(QDateTime::currentDateTimeUtc())
{
}

DateTime::DateTime(const QDateTime& moment)
    : m_moment(moment.toUTC())
    , m_format(QStringLiteral("yyyy-MM-dd hh:mm:ss"))
{
}

void DateTime::setTime_ts(unsigned long long timestamp_us)
{
    m_moment = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(timestamp_us / 1000), Qt::UTC);
}

void DateTime::setOffsetFromUTC(long long offset_s)
{
    m_offset_s = offset_s == Local_TimeZone ? offset_s : qBound(1 - DAY_s, offset_s, DAY_s - 1);
}

void DateTime::setFormatString(QString format)
{
    m_format = std::move(format);
}

QString DateTime::toString() const
{
    return toString(m_format);
}

QString DateTime::toString(const QString& format) const
{
    const QDateTime there = m_offset_s == Local_TimeZone
                                ? m_moment.toLocalTime()
                                : m_moment.toOffsetFromUtc(static_cast<int>(m_offset_s));
    return there.toString(format);
}

} // namespace Vanth
