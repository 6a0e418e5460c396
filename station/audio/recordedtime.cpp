// SPDX-License-Identifier: MIT
#include "station/audio/recordedtime.h"

#include <QDateTime>
#include <QRegularExpression>

namespace morsehost {

namespace {

std::optional<unsigned long long> timeIn(const QString& text, const QRegularExpression& pattern)
{
    QRegularExpressionMatchIterator matches = pattern.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const auto number = [&match](const char* name) {
            return match.captured(QLatin1String(name)).toInt();
        };
        const QDate day(number("year"), number("month"), number("day"));
        const QTime time(number("hour"), number("minute"), number("second"));
        const qint64 milliseconds = QDateTime(day, time, Qt::UTC).toMSecsSinceEpoch();
        if (day.isValid() && time.isValid() && milliseconds >= 0)
            return static_cast<unsigned long long>(milliseconds) * 1000;
    }
    return std::nullopt;
}

} // namespace

std::optional<unsigned long long> timeInName(const QString& fileName)
{
    // Digits before or behind would make another number of it.
    static const QRegularExpression pattern(QStringLiteral(
        "(?<!\\d)(?<year>\\d{4})([-_.]?)(?<month>\\d\\d)\\2(?<day>\\d\\d)"
        "[T_\\- ]{1,2}(?<hour>\\d\\d)([-_:.]?)(?<minute>\\d\\d)\\6(?<second>\\d\\d)(?!\\d)"));
    // Lone surrogates would match nothing.
    return timeIn(QString::fromUtf8(fileName.toUtf8()), pattern);
}

std::optional<unsigned long long> timeInBroadcastChunk(const QString& date, const QString& time)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(?<year>\\d{4})\\D(?<month>\\d\\d)\\D(?<day>\\d\\d) "
                       "(?<hour>\\d\\d)\\D(?<minute>\\d\\d)\\D(?<second>\\d\\d)$"));
    return timeIn(date + QLatin1Char(' ') + time, pattern);
}

} // namespace morsehost
