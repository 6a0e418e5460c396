// SPDX-License-Identifier: MIT
#include "station/service/retention.h"

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace morsehost {

namespace {

constexpr qint64 HOUR_ms = qint64{3600} * 1000;
// A file that was written to so long ago may still be open; more is not likely.
constexpr qint64 WRITTEN_ms = qint64{600} * 1000;

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

// The oldest first.
QFileInfoList filesThatMayGo(const QString& folder, qint64 now_ms)
{
    QFileInfoList files;
    QDirIterator all(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        all.next();
        if (all.fileInfo().lastModified().toMSecsSinceEpoch() < now_ms - WRITTEN_ms)
            files += all.fileInfo();
    }
    std::stable_sort(files.begin(), files.end(), [](const QFileInfo& one, const QFileInfo& other) {
        return one.lastModified() < other.lastModified();
    });
    return files;
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

qint64 FileKeeper::bytesOf(const QString& day, const FileLimits& limits)
{
    const QString folder = QDir(limits.folder).filePath(day);
    // What began yesterday may still be written.
    if (QDate::fromString(day, Qt::ISODate).daysTo(QDate::fromString(limits.today, Qt::ISODate)) <=
        1)
        return bytesBelow(folder);
    const auto known = m_bytes.find(day);
    return known != m_bytes.end() ? *known : *m_bytes.insert(day, bytesBelow(folder));
}

RemovedFiles FileKeeper::keep(const FileLimits& limits)
{
    if (m_day != limits.today)
        m_bytes.clear();
    m_day = limits.today;
    const QDir folder(limits.folder);
    const QDate now = QDate::fromString(limits.today, Qt::ISODate);
    RemovedFiles removed;
    const auto remove = [&](const QString& day) {
        if (QDir(folder.filePath(day)).removeRecursively())
            removed.days += day;
    };
    QStringList kept;
    for (const QString& day : folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QDate date = QDate::fromString(day, Qt::ISODate);
        // What somebody else put there is none of ours.
        if (date.toString(Qt::ISODate) != day)
            continue;
        if (limits.keepDays > 0 && date.daysTo(now) > limits.keepDays)
            remove(day);
        else
            kept += day;
    }
    if (limits.keepBytes <= 0)
        return removed;
    qint64 bytes = 0;
    for (auto day = kept.rbegin(); day != kept.rend(); ++day) {
        bytes += bytesOf(*day, limits);
        if (bytes <= limits.keepBytes)
            continue;
        if (*day != limits.today) {
            remove(*day);
            continue;
        }
        for (const QFileInfo& file : filesThatMayGo(folder.filePath(*day), limits.now_ms)) {
            if (bytes <= limits.keepBytes)
                break;
            if (!QFile::remove(file.filePath()))
                continue;
            bytes -= file.size();
            ++removed.ofToday;
        }
    }
    return removed;
}

} // namespace morsehost
