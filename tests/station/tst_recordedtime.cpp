// SPDX-License-Identifier: MIT
// Dates in the names of recordings and in what they hold about themselves.
#include "station/audio/recordedtime.h"

#include <QDateTime>
#include <QtTest>

using morsehost::timeInBroadcastChunk;
using morsehost::timeInName;

namespace {

QString text(const std::optional<unsigned long long>& time_us)
{
    return time_us ? QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(*time_us / 1000), Qt::UTC)
                         .toString(Qt::ISODate)
                   : QStringLiteral("none");
}

} // namespace

class tst_RecordedTime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDateInANameIsFound_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("time");
        const QString found = QStringLiteral("2026-05-12T10:15:00Z");
        QTest::newRow("SDR program") << "HDSDR_20260512_101500Z_7025kHz_AF.wav" << found;
        QTest::newRow("gqrx") << "gqrx_20260512_101500_7025000.wav" << found;
        QTest::newRow("T between") << "20260512T101500Z_7025000_cw.wav" << found;
        QTest::newRow("dashes") << "rec 2026-05-12 10-15-00.flac" << found;
        QTest::newRow("underscores") << "2026_05_12__10_15_00.ogg" << found;
        QTest::newRow("a byte that is no UTF-8")
            << QString(QChar(0xDCFF)) + "20260512_101500" << found;
        QTest::newRow("the first that is one") << "99999999_101500_20260512_101500" << found;
        QTest::newRow("no date") << "recording.wav"
                                 << "none";
        QTest::newRow("day alone") << "20260512.wav"
                                   << "none";
        QTest::newRow("part of a longer number") << "120260512_1015001.wav"
                                                 << "none";
        QTest::newRow("no such hour") << "20260512_251500.wav"
                                      << "none";
        QTest::newRow("mixed separators") << "2026-05_12_101500.wav"
                                          << "none";
        QTest::newRow("before 1970") << "19690512_101500.wav"
                                     << "none";
    }

    void theDateInANameIsFound()
    {
        QFETCH(QString, name);
        QFETCH(QString, time);
        QCOMPARE(text(timeInName(name)), time);
    }

    void theBroadcastChunkHasDateAndTime()
    {
        QCOMPARE(text(timeInBroadcastChunk("2026-05-12", "10:15:00")), "2026-05-12T10:15:00Z");
        QCOMPARE(text(timeInBroadcastChunk("2026:05:12", "10-15-00")), "2026-05-12T10:15:00Z");
        QCOMPARE(text(timeInBroadcastChunk(QString(10, QChar()), QString(8, QChar()))), "none");
        QCOMPARE(text(timeInBroadcastChunk("", "")), "none");
    }
};

QTEST_APPLESS_MAIN(tst_RecordedTime)
#include "tst_recordedtime.moc"
