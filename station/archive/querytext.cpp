// SPDX-License-Identifier: MIT
#include "station/archive/querytext.h"

#include <QDateTime>
#include <QStringList>

namespace morsehost {

std::optional<qint64> archiveTimeOf(const QString& text)
{
    const QDate day = QDate::fromString(text, Qt::ISODate);
    if (day.isValid() && text.size() == 10)
        return QDateTime(day, QTime(0, 0), Qt::UTC).toMSecsSinceEpoch() * 1000;
    QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (time.timeSpec() == Qt::LocalTime)
        time.setTimeSpec(Qt::UTC);
    if (!time.isValid() || time.toMSecsSinceEpoch() < 0 || time.date().year() > 2106)
        return std::nullopt;
    return time.toMSecsSinceEpoch() * 1000;
}

bool readArchiveFrequency(const QString& text, ArchiveQuery& query)
{
    const QStringList ends = text.split(QLatin1Char('-'));
    bool lowOk = false;
    bool highOk = false;
    const double low_kHz = ends.value(0).toDouble(&lowOk);
    const double high_kHz = ends.value(ends.size() - 1).toDouble(&highOk);
    if (ends.size() > 2 || !lowOk || !highOk || !(low_kHz >= 0) || !(high_kHz >= low_kHz) ||
        high_kHz > 1e10)
        return false;
    // One frequency means what is heard there: a receiver and a decoder miss it by a little.
    const double around_Hz = ends.size() == 1 ? 500 : 0;
    query.lowest_Hz = 1000 * low_kHz - around_Hz;
    query.highest_Hz = 1000 * high_kHz + around_Hz;
    return true;
}

} // namespace morsehost
