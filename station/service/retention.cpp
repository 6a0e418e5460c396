// SPDX-License-Identifier: MIT
#include "station/service/retention.h"

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>

namespace morsehost {

namespace {

constexpr qint64 HOUR_ms = qint64{3600} * 1000;

qint64 bytesBelow(const QString& folder)
{
    qint64 bytes = 0;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        bytes += files.fileInfo().size();
    }
    return bytes;
}

} // namespace

qint64 beginOfKeptDays_us(const QString& today, int keepDays)
{
    return QDate::fromString(today, Qt::ISODate)
               .addDays(-keepDays)
               .startOfDay(Qt::UTC)
               .toMSecsSinceEpoch() *
           1000;
}

bool SteadyClock::isSteady(qint64 wall_ms, qint64 monotonic_ms)
{
    const qint64 difference_ms = wall_ms - monotonic_ms;
    if (qAbs(difference_ms - m_difference_ms.value_or(difference_ms)) > HOUR_ms)
        m_steadyFrom_ms = monotonic_ms + 24 * HOUR_ms;
    m_difference_ms = difference_ms;
    return !m_steadyFrom_ms || monotonic_ms >= *m_steadyFrom_ms;
}

QStringList removeOldDays(const QString& folder, int keepDays, qint64 keepBytes,
                          const QString& today)
{
    const QDate now = QDate::fromString(today, Qt::ISODate);
    QStringList days;
    const QStringList entries =
        QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString& entry : entries) {
        // What somebody else put there is none of ours.
        if (QDate::fromString(entry, Qt::ISODate).toString(Qt::ISODate) == entry)
            days += entry;
    }
    QStringList removed;
    const auto remove = [&](const QString& day) {
        if (QDir(QDir(folder).filePath(day)).removeRecursively())
            removed += day;
    };
    QStringList kept;
    for (const QString& day : qAsConst(days)) {
        if (keepDays > 0 && QDate::fromString(day, Qt::ISODate).daysTo(now) > keepDays)
            remove(day);
        else
            kept += day;
    }
    if (keepBytes <= 0)
        return removed;
    qint64 bytes = 0;
    for (auto day = kept.rbegin(); day != kept.rend(); ++day) {
        bytes += bytesBelow(QDir(folder).filePath(*day));
        if (bytes > keepBytes && *day != today)
            remove(*day);
    }
    return removed;
}

} // namespace morsehost
