// SPDX-License-Identifier: MIT
#include "host/datetime.h"

#include <QtTest>

#include <ctime>

namespace {

constexpr unsigned long long JANUARY_us = 1484216100123456; ///< 2017-01-12 10:15:00.123456 UTC
constexpr unsigned long long MAY_us = 1494584100123456;     ///< 2017-05-12 10:15:00.123456 UTC

} // namespace

class tst_DateTime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setZone("UTC"); }
    void cleanupTestCase() { setZone("UTC"); }

    void theDefaultIsUtcInThePlainFormat()
    {
        Vanth::DateTime time;
        time.setTime_ts(MAY_us);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-12 10:15:00"));
    }

    void theDefaultIsUtcAlsoInAnotherZone()
    {
        setZone("America/New_York");
        Vanth::DateTime time;
        time.setTime_ts(MAY_us);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-12 10:15:00"));
    }

    void aNewObjectStandsAtThePresent()
    {
        const QString format = QStringLiteral("yyyy-MM-dd hh:mm:ss");
        const QString before = QDateTime::currentDateTimeUtc().toString(format);
        const QString made = Vanth::DateTime().toString();
        const QString after = QDateTime::currentDateTimeUtc().toString(format);
        QVERIFY(before <= made && made <= after);
    }

    void aMomentMayComeFromQt()
    {
        setZone("Europe/Berlin");
        const QDateTime local(QDate(2017, 5, 12), QTime(12, 15), Qt::LocalTime);
        QCOMPARE(Vanth::DateTime(local).toString(), QStringLiteral("2017-05-12 10:15:00"));
        const QDateTime early(QDate(1969, 12, 31), QTime(23, 59, 59), Qt::UTC);
        QCOMPARE(Vanth::DateTime(early).toString(), QStringLiteral("1969-12-31 23:59:59"));
        QCOMPARE(Vanth::DateTime(QDateTime()).toString(), QString());
    }

    void millisecondsAreKeptAndMicrosecondsDropped()
    {
        Vanth::DateTime time;
        time.setTime_ts(MAY_us + 543); // ...123999
        QCOMPARE(time.toString(QStringLiteral("hh:mm:ss,zzz")), QStringLiteral("10:15:00,123"));
    }

    void aFormatMayBeSetOrGiven()
    {
        Vanth::DateTime time;
        time.setTime_ts(MAY_us);
        time.setFormatString(QStringLiteral("yyyy_MM_dd"));
        QCOMPARE(time.toString(), QStringLiteral("2017_05_12"));
        QCOMPARE(time.toString(QStringLiteral("hh:mm")), QStringLiteral("10:15"));
        QCOMPARE(time.toString(), QStringLiteral("2017_05_12"));
        QCOMPARE(time.toString(QString()), QString());
    }

    void anOffsetMovesTheClock()
    {
        Vanth::DateTime time;
        time.setTime_ts(MAY_us);
        time.setOffsetFromUTC(5 * 3600 + 1800);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-12 15:45:00"));
        time.setOffsetFromUTC(-11 * 3600);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-11 23:15:00"));
        time.setOffsetFromUTC(0);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-12 10:15:00"));
    }

    void anOffsetOfADayOrMoreIsCut()
    {
        Vanth::DateTime time;
        time.setTime_ts(MAY_us);
        time.setOffsetFromUTC(1000000000000);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-13 10:14:59"));
        time.setOffsetFromUTC(-1000000000000);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-11 10:15:01"));
    }

    void theLocalZoneCountsWithItsDaylightSaving()
    {
        setZone("Europe/Berlin");
        Vanth::DateTime time;
        time.setOffsetFromUTC(Vanth::DateTime::Local_TimeZone);
        time.setTime_ts(JANUARY_us);
        QCOMPARE(time.toString(), QStringLiteral("2017-01-12 11:15:00"));
        time.setTime_ts(MAY_us);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-12 12:15:00"));
    }

    void theLocalZoneIsTheOneOfTheMomentThatIsFormatted()
    {
        Vanth::DateTime time;
        time.setOffsetFromUTC(Vanth::DateTime::Local_TimeZone);
        time.setTime_ts(MAY_us);
        QCOMPARE(time.toString(), QStringLiteral("2017-05-12 10:15:00"));
        setZone("Asia/Tokyo");
        QCOMPARE(time.toString(), QStringLiteral("2017-05-12 19:15:00"));
    }

    void anyTimeStampHasAText()
    {
        Vanth::DateTime time;
        time.setTime_ts(0);
        QCOMPARE(time.toString(), QStringLiteral("1970-01-01 00:00:00"));
        time.setTime_ts(~0ULL);
        QVERIFY(!time.toString().isEmpty());
    }

private:
    static void setZone(const char* zone)
    {
        qputenv("TZ", zone);
        tzset();
    }
};

QTEST_APPLESS_MAIN(tst_DateTime)
#include "tst_datetime.moc"
